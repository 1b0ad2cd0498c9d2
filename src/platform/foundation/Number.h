#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillet::platform {

// A number object: a boolean, a signed or unsigned 64-bit integer or a double that remembers
// which of them it is. 16 bytes, a plain value.
class Number {
public:
    enum class Kind : std::uint8_t { Boolean, Integer, Unsigned, Real };

    constexpr Number() noexcept : Number(std::int64_t{0}) {}
    constexpr explicit Number(bool value) noexcept
        : unsigned_(value ? 1 : 0), kind_(Kind::Boolean) {}
    constexpr explicit Number(std::int64_t value) noexcept
        : integer_(value), kind_(Kind::Integer) {}
    constexpr explicit Number(std::uint64_t value) noexcept
        : unsigned_(value), kind_(Kind::Unsigned) {}
    constexpr explicit Number(double value) noexcept : real_(value), kind_(Kind::Real) {}

    Kind kind() const noexcept { return kind_; }

    // Conversions. Integers wrap modulo 2^64; a real is cut toward zero and held at the limits of
    // the target, NaN gives 0.
    std::uint64_t unsignedIntegerValue() const noexcept;
    std::int64_t integerValue() const noexcept;
    float floatValue() const noexcept;
    double doubleValue() const noexcept;
    bool boolValue() const noexcept;

    // Integers in decimal, booleans as 1 and 0, reals in the shortest form that reads back the
    // same (1.5, and 11 for 11.0).
    std::string text() const;

    // Numeric equality whatever the kinds: 1, 1.0 and true are equal. Exact for every pair (an
    // integer above 2^53 equals only the real of that very value).
    friend bool operator==(const Number& left, const Number& right) noexcept;

private:
    union {
        std::int64_t integer_;
        std::uint64_t unsigned_;
        double real_;
    };
    Kind kind_;
};

// Number conversions of text: the decimal number at its start after white space, else 0; integers
// are held at the 64-bit limits.
std::int64_t integerValueOfText(std::string_view text) noexcept;
float floatValueOfText(std::string_view text) noexcept;
// The decimal number that the text starts with (optional sign, no white space before it), which is
// taken off the text; none where it starts with no number. One that no double can hold gives an
// infinity or 0.
std::optional<double> realValueAtStartOfText(std::string_view& text) noexcept;
// True when, after white space, a sign and zeros, the text starts with one of Y y T t 1-9.
bool boolValueOfText(std::string_view text) noexcept;

}  // namespace quillet::platform
