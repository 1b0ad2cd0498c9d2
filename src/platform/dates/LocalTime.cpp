#include "platform/dates/LocalTime.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <mutex>
#include <numeric>

namespace quillet::platform {

namespace {

constexpr std::int64_t kDay = 86400;  // seconds

// The C library has its own lock, but the thread sanitizer does not see that one.
std::mutex& zoneLock() {
    static std::mutex mutex;
    return mutex;
}

// What the clock shows, in seconds since it showed 1970-01-01 00:00:00. Done here because timegm()
// would add the leap seconds of a zone that counts them.
std::int64_t clockSeconds(const std::tm& local) {
    // The count starts so many years back that all divided numbers are positive.
    constexpr std::int64_t kEras = 10'000'000;  // of 400 years
    constexpr std::int64_t kDaysOfEra = 146'097;
    constexpr std::int64_t kDaysUntil1970 = 719'162;
    const std::int64_t years = std::int64_t{local.tm_year} + 1899 + kEras * 400;
    const std::int64_t days = years * 365 + years / 4 - years / 100 + years / 400 + local.tm_yday -
                              kEras * kDaysOfEra - kDaysUntil1970;
    const int minutes = local.tm_hour * 60 + local.tm_min;
    const int second = std::min(local.tm_sec, 59);  // a leap second looks like the one before
    return days * kDay + std::int64_t{minutes} * 60 + second;
}

struct Moment {
    std::int64_t instant = 0;
    std::int64_t offset = 0;
    std::int64_t day = 0;  // shown by the clock, counted from 1970-01-01
};

Moment momentAt(std::int64_t instant) {
    const std::int64_t offset = localOffset(instant);
    const std::int64_t clock = instant + offset;
    return {instant, offset, clock / kDay - (clock % kDay < 0 ? 1 : 0)};
}

// The first instant with the offset of `after`, if `before` has another offset. A day lasts at most
// two days, and no zone changes its clock twice in that time.
std::int64_t changeBetween(std::int64_t before, std::int64_t after) {
    const std::int64_t offset = localOffset(after);
    while (after - before > 1) {
        const std::int64_t middle = std::midpoint(before, after);
        (localOffset(middle) == offset ? after : before) = middle;
    }
    return after;
}

// The start of the run of instants around the moment that have its day.
std::int64_t startOfDay(const Moment& moment) {
    const std::int64_t midnight = moment.day * kDay - moment.offset;
    const std::int64_t start =
        localOffset(midnight) == moment.offset ? midnight : changeBetween(midnight, moment.instant);
    const Moment before = momentAt(start - 1);
    return before.day == moment.day ? startOfDay(before) : start;
}

// The end of that run.
std::int64_t endOfDay(const Moment& moment) {
    const std::int64_t midnight = (moment.day + 1) * kDay - moment.offset;
    const std::int64_t end = localOffset(midnight - 1) == moment.offset
                                 ? midnight
                                 : changeBetween(moment.instant, midnight - 1);
    const Moment after = momentAt(end);
    return after.day == moment.day ? endOfDay(after) : end;
}

}  // namespace

void refreshTimeZone() {
    const std::lock_guard lock(zoneLock());
    ::tzset();
}

double heldInstant(double instant) {
    constexpr double kFarthest = 1e8 * kDay;
    return std::isnan(instant) ? 0 : std::clamp(instant, -kFarthest, kFarthest);
}

std::int64_t localOffset(std::int64_t instant) {
    const std::time_t time = instant;
    std::tm local{};
    const std::lock_guard lock(zoneLock());
    return ::localtime_r(&time, &local) == nullptr ? 0 : clockSeconds(local) - instant;
}

LocalDay localDayOf(double instant) {
    const Moment moment = momentAt(static_cast<std::int64_t>(std::floor(heldInstant(instant))));
    return {static_cast<double>(startOfDay(moment)), static_cast<double>(endOfDay(moment))};
}

}  // namespace quillet::platform
