#include "platform/plist/Number.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>
#include <system_error>

#include "platform/base/Ascii.h"

namespace quillet::platform {

namespace {

static_assert(std::numeric_limits<double>::is_iec559 && std::numeric_limits<float>::is_iec559,
              "narrowing a double to a float gives the nearest float or an infinity");

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kTwoTo64 = 18446744073709551616.0;

// A real's exponents outside this range are written in scientific notation.
constexpr double kSmallestFixed = 1e-4;
constexpr double kLargestFixed = 1e17;
// The longest fixed form is "-0.000" and 17 digits, the longest scientific one has 24 characters.
constexpr std::size_t kLongestText = 40;

constexpr std::string_view kSpaces = " \t\n\v\f\r";

// The value of a decimal number that is too large or too small for a double.
double outOfRangeValue(std::string_view number) {
    const std::size_t exponent = number.find_first_of("eE");
    const bool tinyExponent = exponent != std::string_view::npos && exponent + 1 < number.size() &&
                              number[exponent + 1] == '-';
    const bool hasExponent = exponent != std::string_view::npos;
    const std::string_view wholePart = number.substr(0, number.find('.'));
    const bool noWholePart = wholePart.find_first_not_of('0') == std::string_view::npos;
    const bool tiny = tinyExponent || (!hasExponent && noWholePart);
    return tiny ? 0.0 : std::numeric_limits<double>::infinity();
}

std::string textOfReal(double value) {
    std::array<char, kLongestText> buffer{};
    const double magnitude = std::fabs(value);
    const bool fixed = magnitude == 0 || (magnitude >= kSmallestFixed && magnitude < kLargestFixed);
    const auto format = fixed ? std::chars_format::fixed : std::chars_format::scientific;
    const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format);
    return {buffer.data(), written.ptr};
}

bool equalsReal(std::int64_t integer, double real) {
    return real >= -kTwoTo63 && real < kTwoTo63 && std::trunc(real) == real &&
           static_cast<std::int64_t>(real) == integer;
}

bool equalsReal(std::uint64_t integer, double real) {
    return real >= 0 && real < kTwoTo64 && std::trunc(real) == real &&
           static_cast<std::uint64_t>(real) == integer;
}

}  // namespace

std::int64_t Number::signedOfReal(double value) noexcept {
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= kTwoTo63) {
        return std::numeric_limits<std::int64_t>::max();
    }
    if (value < -kTwoTo63) {
        return std::numeric_limits<std::int64_t>::min();
    }
    return static_cast<std::int64_t>(value);
}

// Values below 0 become 0, the nearest limit.
std::uint64_t Number::unsignedOfReal(double value) noexcept {
    if (!(value > 0)) {
        return 0;
    }
    if (value >= kTwoTo64) {
        return std::numeric_limits<std::uint64_t>::max();
    }
    return static_cast<std::uint64_t>(value);
}

float Number::floatValue() const noexcept {
    switch (kind_) {
        case Kind::Integer:
            return static_cast<float>(integer());
        case Kind::Real:
            return static_cast<float>(real());
        default:
            return static_cast<float>(bits_);
    }
}

double Number::doubleValue() const noexcept {
    switch (kind_) {
        case Kind::Integer:
            return static_cast<double>(integer());
        case Kind::Real:
            return real();
        default:
            return static_cast<double>(bits_);
    }
}

std::string Number::text() const {
    switch (kind_) {
        case Kind::Integer:
            return std::to_string(integer());
        case Kind::Real:
            return textOfReal(real());
        default:
            return std::to_string(bits_);
    }
}

bool operator==(const Number& left, const Number& right) noexcept {
    using Kind = Number::Kind;
    if (left.kind_ == Kind::Real && right.kind_ == Kind::Real) {
        return left.real() == right.real();
    }
    if (right.kind_ == Kind::Real) {
        return right == left;
    }
    if (left.kind_ == Kind::Real) {
        return right.kind_ == Kind::Integer ? equalsReal(right.integer(), left.real())
                                            : equalsReal(right.bits_, left.real());
    }
    const bool leftNegative = left.kind_ == Kind::Integer && left.integer() < 0;
    const bool rightNegative = right.kind_ == Kind::Integer && right.integer() < 0;
    return leftNegative == rightNegative &&
           left.unsignedIntegerValue() == right.unsignedIntegerValue();
}

bool takeSign(std::string_view& text) noexcept {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    return negative;
}

std::optional<double> realValueAtStartOfText(std::string_view& text) noexcept {
    std::string_view rest = text;
    const bool negative = takeSign(rest);
    // from_chars also accepts words such as "inf" and a second sign; they are not decimal numbers.
    if (rest.empty() || !(isAsciiDigit(rest.front()) || rest.front() == '.')) {
        return std::nullopt;
    }
    double value = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
    if (error == std::errc::invalid_argument) {
        return std::nullopt;
    }
    const auto length = static_cast<std::size_t>(end - rest.data());
    if (error == std::errc::result_out_of_range) {
        value = outOfRangeValue(rest.substr(0, length));
    }
    rest.remove_prefix(length);
    text = rest;
    return negative ? -value : value;
}

std::int64_t integerValueOfText(std::string_view text) noexcept {
    text = trimmedStart(text, kSpaces);
    const bool negative = takeSign(text);
    std::uint64_t magnitude = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), magnitude);
    constexpr auto kMaximum = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (parsed.ec == std::errc::result_out_of_range || magnitude > kMaximum) {
        return negative ? std::numeric_limits<std::int64_t>::min()
                        : std::numeric_limits<std::int64_t>::max();
    }
    const auto value = static_cast<std::int64_t>(magnitude);
    return negative ? -value : value;
}

float floatValueOfText(std::string_view text) noexcept {
    text = trimmedStart(text, kSpaces);
    return static_cast<float>(realValueAtStartOfText(text).value_or(0.0));
}

bool boolValueOfText(std::string_view text) noexcept {
    text = trimmedStart(text, kSpaces);
    takeSign(text);
    text = trimmedStart(text, "0");
    return !text.empty() &&
           std::string_view("YyTt123456789").find(text.front()) != std::string_view::npos;
}

}  // namespace quillet::platform
