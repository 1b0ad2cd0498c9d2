#include "model/CentralDateCache.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <utility>

#include "model/ExtensionDate.h"
#include "platform/dates/LocalTime.h"

namespace quillet {

namespace {

// A store with more days than this pays for formatting instead of memory.
constexpr std::size_t kMostEntries = 4096;

}  // namespace

CentralDateCache::CentralDateCache(double now, RecordBlock& block) : block_(block), now_(now) {
    platform::refreshTimeZone();
}

// Dates of these decades lie between 2^30 and 2^31, where the leading 17 of the 52 fraction bits
// count steps of 8192 seconds. Taking bits is defined for every number.
std::size_t CentralDateCache::placeOf(double date) {
    constexpr unsigned kBitsOfStep = 52 - 17;
    return static_cast<std::size_t>(std::bit_cast<std::uint64_t>(date) >> kBitsOfStep) % kPlaces;
}

const RecordText& CentralDateCache::text(double date) {
    const Entry*& found = found_[placeOf(date)];
    if (found == nullptr || !found->holds(date)) {
        found = &find(date);
    }
    return found->text;
}

const CentralDateCache::Entry& CentralDateCache::find(double date) {
    const auto next = entries_.upper_bound(date);
    const bool known = next != entries_.begin() && std::prev(next)->second.holds(date);
    return known ? std::prev(next)->second : make(date);
}

const CentralDateCache::Entry& CentralDateCache::make(double date) {
    if (entries_.size() >= kMostEntries) {
        entries_.clear();
        found_.fill(nullptr);
    }
    const ExtensionDate& dates = ExtensionDate::shared();
    const std::int64_t day = dates.IntDate(date);
    if (!today_) {
        today_ = dates.IntDate(now_);
    }
    // Today's texts are times, so an entry of today holds for a single instant.
    using Limits = std::numeric_limits<double>;
    platform::LocalDay span{date, std::nextafter(date, Limits::infinity())};
    if (day != today_) {
        span = platform::localDayOf(date);
        // All instants outside the calendar share its first or last day.
        span.start = date < span.start ? Limits::lowest() : span.start;
        span.end = date >= span.end ? Limits::infinity() : span.end;
    }
    RecordText text = block_.store(dates.centralDate(date, day, *today_));
    return entries_.insert_or_assign(span.start, Entry{span.start, span.end, std::move(text)})
        .first->second;
}

}  // namespace quillet
