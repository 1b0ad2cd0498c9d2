#pragma once

#include <cstdint>

// The system's local time as the C library tells it, so that it agrees with the desktop's clock
// whatever zone data other libraries carry. The zone is TZ in all its forms, else the system's zone
// file; what the C library cannot read counts as UTC. Instants are seconds since 1970-01-01
// 00:00:00 UTC. Any thread.
namespace quillet::platform {

// Has the C library look again which zone it is; in between it keeps the one that it knows.
void refreshTimeZone();

// The instant, at most 100,000,000 days away from 1970; every calendar stays quick up to there. NaN
// counts as 0.
double heldInstant(double instant);

// Seconds by which the local clock is ahead of UTC at an instant.
std::int64_t localOffset(std::int64_t instant);

// A local calendar day, or the piece of one that holds an instant where a clock is put back over
// midnight a few minutes after it: [start, end). Follows the clock: a day may last 23 or 25 hours.
struct LocalDay {
    double start = 0;
    double end = 0;
};
// The day that holds the instant, as heldInstant gives it.
LocalDay localDayOf(double instant);

}  // namespace quillet::platform
