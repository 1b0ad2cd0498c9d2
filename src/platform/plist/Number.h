#pragma once

#include <bit>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillet::platform {

// A number object: a boolean, a signed or unsigned 64-bit integer or a double, and which of them it
// is. 16 bytes, a plain value.
class Number {
public:
    enum class Kind : std::uint8_t { Boolean, Integer, Unsigned, Real };

    constexpr Number() noexcept : Number(std::int64_t{0}) {}
    constexpr explicit Number(bool value) noexcept : bits_(value ? 1 : 0), kind_(Kind::Boolean) {}
    constexpr explicit Number(std::int64_t value) noexcept
        : bits_(static_cast<std::uint64_t>(value)), kind_(Kind::Integer) {}
    constexpr explicit Number(std::uint64_t value) noexcept : bits_(value), kind_(Kind::Unsigned) {}
    constexpr explicit Number(double value) noexcept
        : bits_(std::bit_cast<std::uint64_t>(value)), kind_(Kind::Real) {}

    Kind kind() const noexcept { return kind_; }

    // Conversions. Integers wrap modulo 2^64. A real is rounded toward zero and limited to the
    // range of the target; NaN becomes 0.
    std::uint64_t unsignedIntegerValue() const noexcept {
        return kind_ == Kind::Real ? unsignedOfReal(real()) : bits_;
    }
    std::int64_t integerValue() const noexcept {
        return kind_ == Kind::Real ? signedOfReal(real()) : integer();
    }
    float floatValue() const noexcept;
    double doubleValue() const noexcept;
    bool boolValue() const noexcept { return kind_ == Kind::Real ? real() != 0 : bits_ != 0; }

    // Integers in decimal, booleans as 1 and 0, reals in the shortest form that reads back as the
    // same value (1.5, and 11 for 11.0).
    std::string text() const;

    // Numeric equality whatever the kinds: 1, 1.0 and true are equal. Exact for every pair: an
    // integer above 2^53 equals only the real of exactly that value.
    friend bool operator==(const Number& left, const Number& right) noexcept;

private:
    static std::int64_t signedOfReal(double value) noexcept;
    static std::uint64_t unsignedOfReal(double value) noexcept;

    std::int64_t integer() const noexcept { return static_cast<std::int64_t>(bits_); }
    double real() const noexcept { return std::bit_cast<double>(bits_); }

    std::uint64_t bits_;  // of the integer in two's complement, or of the real
    Kind kind_;
};

// Conversions of text: the decimal number at its start, after white space, or 0. Integers are
// limited to the 64-bit range.
std::int64_t integerValueOfText(std::string_view text) noexcept;
float floatValueOfText(std::string_view text) noexcept;
// Removes an optional sign from the start of the text; true for "-".
bool takeSign(std::string_view& text) noexcept;
// Removes the decimal number at the start of the text (optional sign, no white space before it) and
// returns it, or none when the text does not start with a number. A number out of a double's range
// becomes an infinity or 0.
std::optional<double> realValueAtStartOfText(std::string_view& text) noexcept;
// True when, after white space, a sign and zeros, the text starts with one of Y y T t 1-9.
bool boolValueOfText(std::string_view text) noexcept;

}  // namespace quillet::platform
