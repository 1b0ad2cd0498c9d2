#pragma once

#include <cstdint>

// The local time of the C library, which agrees with the desktop's clock whatever zone data other
// libraries carry. The zone is TZ in all its forms, else the system's zone file. A zone that the C
// library cannot read counts as UTC. Instants are seconds since 1970-01-01 00:00:00 UTC. Any
// thread.
namespace quillet::platform {

// Makes the C library look up the zone again. Until the next call it keeps the zone it knows.
void refreshTimeZone();

// The instant, limited to 100,000,000 days before and after 1970: all calendars are fast in that
// range. NaN becomes 0.
double heldInstant(double instant);

// Seconds that the local clock is ahead of UTC at an instant.
std::int64_t localOffset(std::int64_t instant);

// A local calendar day, [start, end). It may last 23 or 25 hours. Where the clock is put back
// across midnight, a day comes in two pieces; then this is one piece.
struct LocalDay {
    double start = 0;
    double end = 0;
};
// The day, or the piece of it, that contains heldInstant(instant).
LocalDay localDayOf(double instant);

}  // namespace quillet::platform
