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
// and none give en_US_POSIX), its calendar is the one of that locale, both as they were when the
// formatter was made. Texts are CLDR's. The local time is the one of LocalTime.h, which follows the
// system's time zone. Formatting and parsing may run on any threads at once.
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

}  // namespace quillet::platform
