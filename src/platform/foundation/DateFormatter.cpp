#include "platform/foundation/DateFormatter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <mutex>
#include <unicode/basictz.h>
#include <unicode/dtrule.h>
#include <unicode/gregocal.h>
#include <unicode/rbtz.h>
#include <unicode/simpletz.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/tzrule.h>
#include <unicode/tztrans.h>
#include <utility>

#include "platform/foundation/PosixTimeZone.h"
#include "platform/foundation/UserRegion.h"

namespace quillet::platform {

namespace {

using icu::UnicodeString;

constexpr double kSecondsPerDay = 86400;
constexpr double kFarthest = 1e8 * kSecondsPerDay;  // seconds; every calendar stays quick up to it
constexpr std::int32_t kSecond = 1000;              // milliseconds
constexpr std::int64_t kDay = 86'400'000;           // milliseconds

// Milliseconds since 1970, cut towards the past. Whole seconds and the rest are taken apart, so
// that an instant just below a second is not rounded up to it.
double millisecondsOf(double seconds) {
    if (std::isnan(seconds)) {
        return 0;
    }
    const double held = std::clamp(seconds, -kFarthest, kFarthest);
    const double whole = std::floor(held);
    return whole * 1000 + std::floor((held - whole) * 1000);
}

icu::Locale userLocale() {
    return icu::Locale::createCanonical(dateLocaleName().c_str());
}

std::unique_ptr<icu::AnnualTimeZoneRule> annualRule(const UnicodeString& name,
                                                    int standard,
                                                    int saving,
                                                    const PosixTimeZone::Change& change) {
    const auto month = static_cast<std::int32_t>(change.month);
    const std::int32_t time = change.time * kSecond;
    auto day = change.week == 0 ? std::make_unique<icu::DateTimeRule>(
                                      month, change.day, time, icu::DateTimeRule::WALL_TIME)
                                : std::make_unique<icu::DateTimeRule>(month,
                                                                      change.week,
                                                                      UCAL_SUNDAY + change.weekday,
                                                                      time,
                                                                      icu::DateTimeRule::WALL_TIME);
    constexpr std::int32_t kFirstYear = 1;
    return std::make_unique<icu::AnnualTimeZoneRule>(name,
                                                     standard * kSecond,
                                                     saving * kSecond,
                                                     day.release(),
                                                     kFirstYear,
                                                     icu::AnnualTimeZoneRule::MAX_YEAR);
}

// Null where the library refuses the rules.
std::unique_ptr<icu::TimeZone> zoneWithRules(const UnicodeString& id, const PosixTimeZone& zone) {
    const PosixTimeZone::Saving& saving = *zone.saving;
    auto result = std::make_unique<icu::RuleBasedTimeZone>(
        id, new icu::InitialTimeZoneRule(id, zone.offset * kSecond, 0));
    UErrorCode status = U_ZERO_ERROR;
    // The order decides where both fall together, as they do in a zone that always saves.
    for (const auto& [offset, change] :
         {std::pair(0, saving.end), std::pair(saving.offset - zone.offset, saving.start)}) {
        result->addTransitionRule(annualRule(id, zone.offset, offset, change).release(), status);
    }
    result->complete(status);
    return U_SUCCESS(status) ? std::move(result) : nullptr;
}

// A zone of an id that the zone database does not have.
std::unique_ptr<icu::TimeZone> unlistedZone(const UnicodeString& id, const std::string& name) {
    const std::optional<PosixTimeZone> zone = posixTimeZone(name);
    if (zone && zone->saving) {
        if (auto result = zoneWithRules(id, *zone)) {
            return result;
        }
    }
    // The C library may know more: the path of a zone file that is kept elsewhere.
    ::tzset();
    const auto offset = zone ? zone->offset : -static_cast<std::int32_t>(::timezone);
    return std::make_unique<icu::SimpleTimeZone>(offset * kSecond, id);
}

std::unique_ptr<icu::TimeZone> userTimeZone() {
    const std::optional<std::string> name = timeZoneName();
    if (!name) {
        return std::unique_ptr<icu::TimeZone>(icu::TimeZone::detectHostTimeZone());
    }
    const UnicodeString id = UnicodeString::fromUTF8(*name);
    UnicodeString ignored;
    UBool isListed = false;
    UErrorCode status = U_ZERO_ERROR;
    // The library makes zones of texts like "GMT+02:00" too, with the sign that they have not in
    // TZ.
    icu::TimeZone::getCanonicalID(id, ignored, isListed, status);
    if (U_SUCCESS(status) && isListed) {
        return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createTimeZone(id));
    }
    return unlistedZone(id, *name);
}

icu::DateFormat::EStyle styleOf(DateStyle style) {
    return style == DateStyle::Short ? icu::DateFormat::kShort : icu::DateFormat::kNone;
}

std::unique_ptr<icu::DateFormat> patternFormat(std::string_view pattern,
                                               const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    auto format = std::make_unique<icu::SimpleDateFormat>(
        UnicodeString::fromUTF8({pattern.data(), static_cast<std::int32_t>(pattern.size())}),
        locale,
        status);
    return U_SUCCESS(status) ? std::move(format) : nullptr;
}

}  // namespace

struct DateFormatter::State {
    // The library's formatters keep scratch state, so one call at a time is let in.
    mutable std::mutex mutex;
    std::unique_ptr<icu::DateFormat> format;  // none: every text is empty, nothing is parsed

    State(std::unique_ptr<icu::DateFormat> made, std::unique_ptr<icu::TimeZone> zone)
        : format(std::move(made)) {
        if (format) {
            format->setLenient(false);
            format->adoptTimeZone(zone.release());
        }
    }

    std::string write(UDate milliseconds) const {
        UnicodeString text;
        std::string utf8;
        if (format) {
            format->format(milliseconds, text).toUTF8String(utf8);
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
    state_ = std::make_unique<State>(std::move(format), userTimeZone());
}

DateFormatter DateFormatter::localPattern(std::string_view pattern) {
    icu::Locale locale = userLocale();
    UErrorCode ignored = U_ZERO_ERROR;
    locale.setUnicodeKeywordValue("nu", "latn", ignored);
    return DateFormatter(std::make_unique<State>(patternFormat(pattern, locale), userTimeZone()));
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
    return DateFormatter(std::make_unique<State>(
        std::move(format), std::unique_ptr<icu::TimeZone>(icu::TimeZone::getGMT()->clone())));
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
    const UDate milliseconds = state_->format->parse(
        UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())}), status);
    // The parser takes less than a full text, and one digit for two; only what reads back the same
    // is a match.
    if (U_FAILURE(status) || std::abs(milliseconds) > kFarthest * 1000 ||
        state_->write(milliseconds) != text) {
        return std::nullopt;
    }
    return milliseconds / 1000;
}

struct LocalDays::State {
    // A stretch of time with one distance from UTC, [start, end) in milliseconds since 1970.
    struct Stretch {
        std::int64_t start = 0;
        std::int64_t end = 0;
        std::int64_t offset = 0;

        std::int64_t dayAt(std::int64_t instant) const {
            const std::int64_t local = instant + offset;
            return local / kDay - (local % kDay < 0 ? 1 : 0);
        }
        std::int64_t startOf(std::int64_t day) const { return day * kDay - offset; }
    };

    std::unique_ptr<icu::TimeZone> zone = userTimeZone();

    Stretch stretchAt(std::int64_t instant) const;
};

LocalDays::State::Stretch LocalDays::State::stretchAt(std::int64_t instant) const {
    constexpr std::int64_t kForever = std::int64_t{1} << 62;
    Stretch stretch{-kForever, kForever, 0};
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t raw = 0;
    std::int32_t saving = 0;
    const auto date = static_cast<UDate>(instant);
    zone->getOffset(date, 0, raw, saving, status);
    stretch.offset = std::int64_t{raw} + saving;
    if (const auto* basic = dynamic_cast<const icu::BasicTimeZone*>(zone.get())) {
        icu::TimeZoneTransition transition;
        if (basic->getPreviousTransition(date, 1, transition)) {
            stretch.start = static_cast<std::int64_t>(transition.getTime());
        }
        if (basic->getNextTransition(date, 0, transition)) {
            stretch.end = static_cast<std::int64_t>(transition.getTime());
        }
    }
    return stretch;
}

LocalDays::LocalDays() : state_(std::make_unique<State>()) {}

LocalDays::~LocalDays() = default;

LocalDays::Day LocalDays::dayOf(double secondsSince1970) const {
    const auto instant = static_cast<std::int64_t>(millisecondsOf(secondsSince1970));
    const State::Stretch here = state_->stretchAt(instant);
    const std::int64_t day = here.dayAt(instant);

    State::Stretch first = here;
    while (first.startOf(day) <= first.start) {
        const State::Stretch before = state_->stretchAt(first.start - 1);
        if (before.dayAt(first.start - 1) != day) {
            break;
        }
        first = before;
    }
    State::Stretch last = here;
    while (last.startOf(day + 1) >= last.end) {
        const State::Stretch after = state_->stretchAt(last.end);
        if (after.dayAt(last.end) != day) {
            break;
        }
        last = after;
    }
    const std::int64_t start = std::max(first.startOf(day), first.start);
    const std::int64_t end = std::min(last.startOf(day + 1), last.end);
    return {static_cast<double>(start) / 1000, static_cast<double>(end) / 1000};
}

}  // namespace quillet::platform
