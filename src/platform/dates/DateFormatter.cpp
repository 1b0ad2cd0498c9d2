#include "platform/dates/DateFormatter.h"

#include <cmath>
#include <cstdint>
#include <mutex>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <utility>

#include "platform/dates/LocalTime.h"
#include "platform/dates/UserRegion.h"

namespace quillet::platform {

namespace {

using icu::UnicodeString;

constexpr std::int32_t kSecond = 1000;  // milliseconds

// Milliseconds since 1970, cut towards the past. Whole seconds and the rest are taken apart, so
// that an instant just below a second is not rounded up to it.
double millisecondsOf(double seconds) {
    const double held = heldInstant(seconds);
    const double whole = std::floor(held);
    return whole * kSecond + std::floor((held - whole) * kSecond);
}

icu::Locale userLocale() {
    return icu::Locale::createCanonical(dateLocaleName().c_str());
}

// The system's time zone, asked of the C library each time, since a formatter outlives changes of
// it. The offset comes as a whole: the C library does not tell daylight saving apart.
class SystemTimeZone final : public icu::TimeZone {
public:
    SystemTimeZone() : icu::TimeZone(UnicodeString("System")) {}

    void getOffset(UDate date,
                   UBool local,
                   std::int32_t& rawOffset,
                   std::int32_t& dstOffset,
                   UErrorCode& status) const override {
        if (U_SUCCESS(status)) {
            const double held = heldInstant(date / kSecond);
            const auto second = static_cast<std::int64_t>(std::floor(held));
            const std::int64_t offset = local != 0 ? offsetOfClock(second) : localOffset(second);
            rawOffset = static_cast<std::int32_t>(offset) * kSecond;
            dstOffset = 0;
        }
    }

    SystemTimeZone* clone() const override { return new SystemTimeZone(*this); }

    // What remains is for zones with rules of their own; formatting and parsing do without.
    std::int32_t getOffset(std::uint8_t /*era*/,
                           std::int32_t /*year*/,
                           std::int32_t /*month*/,
                           std::int32_t /*day*/,
                           std::uint8_t /*dayOfWeek*/,
                           std::int32_t /*milliseconds*/,
                           UErrorCode& status) const override {
        status = U_UNSUPPORTED_ERROR;
        return 0;
    }
    std::int32_t getOffset(std::uint8_t /*era*/,
                           std::int32_t /*year*/,
                           std::int32_t /*month*/,
                           std::int32_t /*day*/,
                           std::uint8_t /*dayOfWeek*/,
                           std::int32_t /*milliseconds*/,
                           std::int32_t /*monthLength*/,
                           UErrorCode& status) const override {
        status = U_UNSUPPORTED_ERROR;
        return 0;
    }
    void setRawOffset(std::int32_t /*milliseconds*/) override {}
    std::int32_t getRawOffset() const override { return 0; }
    UBool useDaylightTime() const override { return 0; }
    UBool inDaylightTime(UDate /*date*/, UErrorCode& /*status*/) const override { return 0; }
    UClassID getDynamicClassID() const override {
        static char id = 0;
        return &id;
    }

private:
    // Of what the clock shows. A time that comes twice is the later one; one that is left out
    // counts as if the clock had not been put forward yet.
    static std::int64_t offsetOfClock(std::int64_t clock) {
        constexpr std::int64_t kDay = 86400;  // more than any zone's offset
        const std::int64_t before = localOffset(clock - kDay);
        const std::int64_t after = localOffset(clock + kDay);
        return localOffset(clock - after) == after ? after : before;
    }
};

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
    state_ = std::make_unique<State>(std::move(format), std::make_unique<SystemTimeZone>());
}

DateFormatter DateFormatter::localPattern(std::string_view pattern) {
    icu::Locale locale = userLocale();
    UErrorCode ignored = U_ZERO_ERROR;
    locale.setKeywordValue("numbers", "latn", ignored);
    return DateFormatter(std::make_unique<State>(patternFormat(pattern, locale),
                                                 std::make_unique<SystemTimeZone>()));
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
    if (U_FAILURE(status) || milliseconds / kSecond != heldInstant(milliseconds / kSecond) ||
        state_->write(milliseconds) != text) {
        return std::nullopt;
    }
    return milliseconds / kSecond;
}

}  // namespace quillet::platform
