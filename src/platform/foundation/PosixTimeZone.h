#pragma once

#include <optional>
#include <string_view>

namespace quillet::platform {

// A time zone as POSIX writes it into TZ: "CET-1CEST,M3.5.0,M10.5.0/3". Offsets are seconds east
// of UTC, the reverse of the text's sign.
struct PosixTimeZone {
    // When a clock is put, each year: `day` of the month, counted from the month's first day and
    // perhaps past its last one; or, where `week` is not 0, that week's `weekday`.
    struct Change {
        int month = 0;        // 0 is January
        int day = 0;          // 1 is the first
        int week = 0;         // 1 to 4; -1 is the last of the month
        int weekday = 0;      // 0 is Sunday
        int time = 2 * 3600;  // seconds from midnight of the clock before it is put; any sign
    };
    struct Saving {
        int offset = 0;
        Change start;
        Change end;
    };

    int offset = 0;
    std::optional<Saving> saving;  // daylight saving time; none: the same time all year
};

// None where the text does not begin with a name and an offset. A part after them that cannot be
// read leaves the zone without daylight saving. Where only the rules are missing, they are those
// of the C library: from the second Sunday of March to the first of November.
std::optional<PosixTimeZone> posixTimeZone(std::string_view text);

}  // namespace quillet::platform
