#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quillet::platform {

enum class DateStyle { None, Short };

// Turns instants into text and back. An instant is a double in seconds since 1970-01-01 00:00:00
// UTC, cut to milliseconds; values beyond 100,000,000 days from there are held at that limit, NaN
// counts as 0.
//
// The user's locale is LC_ALL, LC_TIME or LANG (the first that is set and not empty; "C", "POSIX"
// and none give en_US_POSIX), its calendar is the one of that locale, the local time zone is TZ (a
// zone of the database, or a POSIX text with its rules for daylight saving) or the system's; all
// as they were when the formatter was made. Texts are CLDR's. Formatting and
// parsing may run on any threads at once.
class DateFormatter {
public:
    // The user's locale, calendar and time zone, with the given styles; both None give "".
    DateFormatter(DateStyle dateStyle, DateStyle timeStyle);
    // A fixed Unicode date pattern in the user's locale, calendar and time zone. Numbers are
    // written in ASCII digits whatever the locale's are, so that they can be read back as numbers.
    static DateFormatter localPattern(std::string_view pattern);
    // A fixed pattern in the locale en_US_POSIX, the Gregorian calendar and UTC.
    static DateFormatter exchangePattern(std::string_view pattern);

    ~DateFormatter();
    DateFormatter(DateFormatter&& other) noexcept;
    DateFormatter& operator=(DateFormatter&& other) noexcept;

    std::string stringFromDate(double secondsSince1970) const;
    // None unless the text is, byte for byte, what stringFromDate writes for the result.
    std::optional<double> dateFromString(std::string_view text) const;

private:
    struct State;
    explicit DateFormatter(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

// The local calendar day that holds an instant, as [start, end) in seconds since 1970; follows
// daylight saving (a day may last 23 or 25 hours). Instants are held as DateFormatter holds them.
// Where a clock is put back over midnight a few minutes after it, a day falls into two pieces; the
// piece is given. Made in the user's time zone as it is when it is made. Any thread.
class LocalDays {
public:
    struct Day {
        double start = 0;
        double end = 0;
    };

    LocalDays();
    ~LocalDays();
    LocalDays(const LocalDays&) = delete;
    LocalDays& operator=(const LocalDays&) = delete;

    Day dayOf(double secondsSince1970) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
