#include "model/CentralDateCache.h"

#include <cmath>
#include <limits>

#include "model/ExtensionDate.h"

namespace quillet {

namespace {

// A store whose dates are spread wider than this is formatted again rather than remembered.
constexpr std::size_t kMostEntries = 4096;

bool holds(double start, double end, double date) {
    return start <= date && date < end;
}

}  // namespace

CentralDateCache::CentralDateCache(double now)
    : now_(now), today_(days_.dayOf(now)), last_(entries_.end()) {}

std::string_view CentralDateCache::text(double date) {
    if (last_ == entries_.end() || !holds(last_->first, last_->second.end, date)) {
        auto next = entries_.upper_bound(date);
        const bool known = next != entries_.begin() &&
                           holds(std::prev(next)->first, std::prev(next)->second.end, date);
        last_ = known ? std::prev(next) : make(date);
    }
    return last_->second.text;
}

CentralDateCache::Entries::const_iterator CentralDateCache::make(double date) {
    if (entries_.size() >= kMostEntries) {
        entries_.clear();
    }
    // Times of today differ from instant to instant; an entry for one of them holds for it alone.
    const double nextInstant = std::nextafter(date, std::numeric_limits<double>::infinity());
    const platform::LocalDays::Day day = holds(today_.start, today_.end, date)
                                             ? platform::LocalDays::Day{date, nextInstant}
                                             : days_.dayOf(date);
    const Entry entry{day.end, ExtensionDate::shared().centralDate(date, now_)};
    // Instants beyond the calendar's limits lie outside of the day they are held at.
    return holds(day.start, day.end, date)
               ? entries_.insert_or_assign(day.start, entry).first
               : entries_.insert_or_assign(date, Entry{nextInstant, entry.text}).first;
}

}  // namespace quillet
