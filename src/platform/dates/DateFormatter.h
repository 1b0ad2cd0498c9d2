#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quillet::platform {

enum class DateStyle { None, Short };

// Turns instants into text and back. An instant is a double in seconds since 1970-01-01 00:00:00
// UTC, cut to milliseconds and limited by heldInstant (see LocalTime.h).
//
// The user's locale is LC_ALL, LC_TIME or LANG, the first that is set and not empty; "C", "POSIX"
// and an unset locale mean en_US_POSIX. The locale also sets the calendar. Both are read when the
// formatter is made. Texts are CLDR's. The local time is that of LocalTime.h, so it follows the
// system's time zone. Any threads may format and parse at the same time.
class DateFormatter {
public:
    // The given styles in the user's locale, calendar and time zone. With None twice all texts are
    // empty.
    DateFormatter(DateStyle dateStyle, DateStyle timeStyle);
    // A fixed Unicode date pattern in the user's locale, calendar and time zone. Digits are ASCII
    // in every locale, so that the text can be read as a number.
    static DateFormatter localPattern(std::string_view pattern);
    // A fixed pattern in the locale en_US_POSIX, the Gregorian calendar and UTC.
    static DateFormatter exchangePattern(std::string_view pattern);

    ~DateFormatter();
    DateFormatter(DateFormatter&& other) noexcept;
    DateFormatter& operator=(DateFormatter&& other) noexcept;

    std::string stringFromDate(double secondsSince1970) const;
    // The instant that stringFromDate writes as exactly this text, or none.
    std::optional<double> dateFromString(std::string_view text) const;

private:
    struct State;
    explicit DateFormatter(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
