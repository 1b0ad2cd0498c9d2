#include "platform/dates/DateFormatter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <utility>

#include "platform/dates/LocalTime.h"

namespace quillet::platform {

namespace {

using icu::UnicodeString;

constexpr double kSecond = 1000;  // milliseconds

// Milliseconds since 1970, cut towards the past. Whole seconds and the rest are cut apart, so that
// an instant just below a second is not rounded up to it.
UDate millisecondsOf(double seconds) {
    const double held = heldInstant(seconds);
    const double whole = std::floor(held);
    return whole * kSecond + std::floor((held - whole) * kSecond);
}

// Glibc's locale modifiers that name a script, and CLDR's names for these scripts.
constexpr std::pair<std::string_view, std::string_view> kScripts[] = {
    {"latin", "_Latn"},
    {"cyrillic", "_Cyrl"},
    {"devanagari", "_Deva"},
    {"iqtelif", "_Latn"},
};

std::string_view environmentLocale() {
    for (const char* name : {"LC_ALL", "LC_TIME", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && value[0] != '\0') {
            return value;
        }
    }
    return "C";
}

// The user's locale for dates under its CLDR name: "de_DE.UTF-8" is "de_DE" there, "sr_RS@latin" is
// "sr_Latn_RS". A modifier of CLDR keywords ("@calendar=buddhist") is kept.
icu::Locale userLocale() {
    const std::string_view locale = environmentLocale();
    std::string name(locale.substr(0, locale.find_first_of(".@")));
    if (name.empty() || name == "C" || name == "POSIX") {
        return {"en_US_POSIX"};
    }
    const std::string_view modifier = locale.substr(std::min(locale.find('@'), locale.size()));
    for (const auto& [glibc, script] : kScripts) {
        if (!modifier.empty() && modifier.substr(1) == glibc) {
            name.insert(std::min(name.find('_'), name.size()), script);
        }
    }
    if (modifier.find('=') != std::string_view::npos) {
        name += modifier;
    }
    return icu::Locale::createCanonical(name.c_str());
}

UnicodeString unicode(std::string_view text) {
    return UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

icu::DateFormat::EStyle styleOf(DateStyle style) {
    return style == DateStyle::Short ? icu::DateFormat::kShort : icu::DateFormat::kNone;
}

std::unique_ptr<icu::DateFormat> patternFormat(std::string_view pattern,
                                               const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    auto format = std::make_unique<icu::SimpleDateFormat>(unicode(pattern), locale, status);
    return U_SUCCESS(status) ? std::move(format) : nullptr;
}

// Seconds that the local clock is ahead of UTC when it shows `clock` (seconds since it showed
// 1970). A time that comes twice is the later one; one that is left out counts as if the clock had
// not been put forward yet.
std::int64_t offsetOfClock(std::int64_t clock) {
    constexpr std::int64_t kDay = 86400;  // more than any zone's offset
    const std::int64_t before = localOffset(clock - kDay);
    const std::int64_t after = localOffset(clock + kDay);
    return localOffset(clock - after) == after ? after : before;
}

}  // namespace

// The library formats in UTC. For the user's texts it gets what the local clock shows in place of
// the instant. All times are milliseconds.
struct DateFormatter::State {
    enum class Clock { Local, Utc };

    // The library's formatters keep scratch state, so only one call at a time may use one.
    mutable std::mutex mutex;
    std::unique_ptr<icu::DateFormat> format;  // null: every text is empty, nothing is parsed
    Clock clock;

    State(std::unique_ptr<icu::DateFormat> made, Clock shown)
        : format(std::move(made)), clock(shown) {
        if (format) {
            format->setLenient(false);
            format->setTimeZone(*icu::TimeZone::getGMT());
        }
    }

    // How far the clock is ahead of UTC: `offsetAt` (localOffset or offsetOfClock) of `time`.
    UDate offset(UDate time, std::int64_t (*offsetAt)(std::int64_t)) const {
        const auto second = static_cast<std::int64_t>(std::floor(heldInstant(time / kSecond)));
        return clock == Clock::Local ? static_cast<double>(offsetAt(second)) * kSecond : 0;
    }

    std::string write(UDate instant) const {
        UnicodeString text;
        std::string utf8;
        if (format) {
            format->format(instant + offset(instant, localOffset), text).toUTF8String(utf8);
        }
        return utf8;
    }
};

DateFormatter::DateFormatter(std::unique_ptr<State> state) : state_(std::move(state)) {}

DateFormatter::DateFormatter(DateStyle dateStyle, DateStyle timeStyle) {
    std::unique_ptr<icu::DateFormat> format;
    if (dateStyle != DateStyle::None || timeStyle != DateStyle::None) {
        format.reset(icu::DateFormat::createDateTimeInstance(
            styleOf(dateStyle), styleOf(timeStyle), userLocale()));
    }
    state_ = std::make_unique<State>(std::move(format), State::Clock::Local);
}

DateFormatter DateFormatter::localPattern(std::string_view pattern) {
    icu::Locale locale = userLocale();
    UErrorCode ignored = U_ZERO_ERROR;
    locale.setKeywordValue("numbers", "latn", ignored);
    return DateFormatter(
        std::make_unique<State>(patternFormat(pattern, locale), State::Clock::Local));
}

DateFormatter DateFormatter::exchangePattern(std::string_view pattern) {
    const icu::Locale locale("en_US_POSIX");
    auto format = patternFormat(pattern, locale);
    UErrorCode status = U_ZERO_ERROR;
    auto calendar =
        std::make_unique<icu::GregorianCalendar>(*icu::TimeZone::getGMT(), locale, status);
    if (format && U_SUCCESS(status)) {
        format->adoptCalendar(calendar.release());
    }
    return DateFormatter(std::make_unique<State>(std::move(format), State::Clock::Utc));
}

DateFormatter::~DateFormatter() = default;
DateFormatter::DateFormatter(DateFormatter&& other) noexcept = default;
DateFormatter& DateFormatter::operator=(DateFormatter&& other) noexcept = default;

std::string DateFormatter::stringFromDate(double secondsSince1970) const {
    const std::lock_guard lock(state_->mutex);
    return state_->write(millisecondsOf(secondsSince1970));
}

std::optional<double> DateFormatter::dateFromString(std::string_view text) const {
    constexpr std::size_t kLongestText = 1000;  // bytes; no date is longer
    const std::lock_guard lock(state_->mutex);
    if (!state_->format || text.size() > kLongestText) {
        return std::nullopt;
    }
    UErrorCode status = U_ZERO_ERROR;
    const UDate clock = state_->format->parse(unicode(text), status);
    const UDate instant = clock - state_->offset(clock, offsetOfClock);
    // The parser accepts texts that it reads only in part, and one digit in place of two. So a text
    // counts only if it is what the instant is written as.
    if (U_FAILURE(status) || instant / kSecond != heldInstant(instant / kSecond) ||
        state_->write(instant) != text) {
        return std::nullopt;
    }
    return instant / kSecond;
}

}  // namespace quillet::platform
