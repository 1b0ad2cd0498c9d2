#include "platform/foundation/PosixTimeZone.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

namespace quillet::platform {

namespace {

constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr std::size_t kShortestName = 3;
constexpr int kLongestOffset = 24;  // hours
constexpr int kLongestTime = 167;   // hours

using Change = PosixTimeZone::Change;

// Takes the parts of a text from its front. What cannot be taken is left where it is.
class Parts {
public:
    explicit Parts(std::string_view text) : rest_(text) {}

    bool isAtEnd() const { return rest_.empty(); }

    bool take(char character) {
        const bool isNext = rest_.starts_with(character);
        rest_.remove_prefix(isNext ? 1 : 0);
        return isNext;
    }

    // "CET" or, with signs and digits, "<+0545>".
    bool takeName() {
        const bool isQuoted = rest_.starts_with('<');
        const std::size_t end =
            std::min(isQuoted ? rest_.find('>') : rest_.find_first_not_of(kLetters), rest_.size());
        if (end < kShortestName + (isQuoted ? 1 : 0) || (isQuoted && end == rest_.size())) {
            return false;
        }
        rest_.remove_prefix(end + (isQuoted ? 1 : 0));
        return true;
    }

    std::optional<int> takeNumber(int least, int most) {
        int number = 0;
        const auto [end, failure] =
            std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
        if (failure != std::errc() || rest_.starts_with('-') || number < least || number > most) {
            return std::nullopt;
        }
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
        return number;
    }

    // [+-]hours[:minutes[:seconds]], in seconds.
    std::optional<int> takeTime(int mostHours) {
        const int sign = take('-') ? -1 : 1;
        if (sign > 0) {
            take('+');
        }
        const std::optional<int> hours = takeNumber(0, mostHours);
        if (!hours) {
            return std::nullopt;
        }
        int time = *hours * 3600;
        for (const int unit : {60, 1}) {
            if (!take(':')) {
                break;
            }
            const std::optional<int> count = takeNumber(0, 59);
            if (!count) {
                return std::nullopt;
            }
            time += *count * unit;
        }
        return sign * time;
    }

private:
    std::string_view rest_;
};

// "M3.5.0": a week's day of a month; the fifth week is the last.
std::optional<Change> takeWeekday(Parts& parts) {
    const auto month = parts.takeNumber(1, 12);
    const auto week = month && parts.take('.') ? parts.takeNumber(1, 5) : std::nullopt;
    const auto weekday = week && parts.take('.') ? parts.takeNumber(0, 6) : std::nullopt;
    if (!weekday) {
        return std::nullopt;
    }
    return Change{.month = *month - 1, .week = *week == 5 ? -1 : *week, .weekday = *weekday};
}

// "J60": a day of the year, without leap days: the first of March in every year.
std::optional<Change> takeDayOfEveryYear(Parts& parts) {
    constexpr std::array kMonths{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const auto number = parts.takeNumber(1, 365);
    if (!number) {
        return std::nullopt;
    }
    Change change{.day = *number};
    for (std::size_t month = 0; change.day > kMonths.at(month); ++month) {
        change.day -= kMonths.at(month);
        ++change.month;
    }
    return change;
}

// "59": days since the first of January, with leap days.
std::optional<Change> takeDayOfYear(Parts& parts) {
    const auto number = parts.takeNumber(0, 365);
    return number ? std::optional(Change{.day = *number + 1}) : std::nullopt;
}

std::optional<Change> takeChange(Parts& parts) {
    if (!parts.take(',')) {
        return std::nullopt;
    }
    std::optional<Change> change = parts.take('M')   ? takeWeekday(parts)
                                   : parts.take('J') ? takeDayOfEveryYear(parts)
                                                     : takeDayOfYear(parts);
    if (change && parts.take('/')) {
        const std::optional<int> time = parts.takeTime(kLongestTime);
        if (!time) {
            return std::nullopt;
        }
        change->time = *time;
    }
    return change;
}

// What follows the standard time, whose offset is given.
std::optional<PosixTimeZone::Saving> takeSaving(Parts& parts, int standard) {
    PosixTimeZone::Saving saving{
        .offset = standard + 3600,
        .start = {.month = 2, .week = 2},
        .end = {.month = 10, .week = 1},
    };
    if (!parts.takeName()) {
        return std::nullopt;
    }
    if (const auto offset = parts.takeTime(kLongestOffset)) {
        saving.offset = -*offset;
    }
    if (parts.isAtEnd()) {
        return saving;
    }
    const std::optional<Change> start = takeChange(parts);
    const std::optional<Change> end = start ? takeChange(parts) : std::nullopt;
    if (!end || !parts.isAtEnd()) {
        return std::nullopt;
    }
    saving.start = *start;
    saving.end = *end;
    return saving;
}

}  // namespace

std::optional<PosixTimeZone> posixTimeZone(std::string_view text) {
    Parts parts(text);
    const bool isNamed = parts.takeName();
    const std::optional<int> offset = isNamed ? parts.takeTime(kLongestOffset) : std::nullopt;
    if (!offset) {
        return std::nullopt;
    }
    return PosixTimeZone{.offset = -*offset, .saving = takeSaving(parts, -*offset)};
}

}  // namespace quillet::platform
