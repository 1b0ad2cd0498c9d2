#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

#include "platform/plist/Number.h"

namespace quillet::test {

namespace {

using platform::Number;

constexpr std::int64_t kMinimum = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMaximum = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t kUnsignedMaximum = std::numeric_limits<std::uint64_t>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(Number, ConvertsAsItsKindSays) {
    struct Case {
        Number number;
        std::uint64_t asUnsigned;
        std::int64_t asSigned;
        float asFloat;
        const char* text;
    };
    const Case cases[] = {
        {Number(std::int64_t{0}), 0, 0, 0.0F, "0"},
        {Number(std::int64_t{-1}), kUnsignedMaximum, -1, -1.0F, "-1"},
        {Number(kUnsignedMaximum), kUnsignedMaximum, -1, 0x1p64F, "18446744073709551615"},
        {Number(std::int64_t{1763163889}), 1763163889, 1763163889, 1763163904.0F, "1763163889"},
        {Number(true), 1, 1, 1.0F, "1"},
        {Number(false), 0, 0, 0.0F, "0"},
        {Number(2.9), 2, 2, 2.9F, "2.9"},
        {Number(-2.9), 0, -2, -2.9F, "-2.9"},
        {Number(11.0), 11, 11, 11.0F, "11"},
        {Number(100000.0), 100000, 100000, 1e5F, "100000"},
        {Number(1e-7), 0, 0, 1e-7F, "1e-07"},
        {Number(0x1p63), std::uint64_t{1} << 63U, kMaximum, 0x1p63F, "9.223372036854776e+18"},
        // Beyond the range they are held at its end.
        {Number(1e30), kUnsignedMaximum, kMaximum, 1e30F, "1e+30"},
        {Number(-1e30), 0, kMinimum, -1e30F, "-1e+30"},
        {Number(kInfinity), kUnsignedMaximum, kMaximum, static_cast<float>(kInfinity), "inf"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.number.unsignedIntegerValue(), c.asUnsigned);
        EXPECT_EQ(c.number.integerValue(), c.asSigned);
        EXPECT_EQ(c.number.floatValue(), c.asFloat);
        EXPECT_EQ(c.number.boolValue(), c.asFloat != 0);
        EXPECT_EQ(c.number.text(), c.text);
    }
    const Number nan(std::nan(""));
    EXPECT_EQ(nan.integerValue(), 0);
    EXPECT_EQ(nan.unsignedIntegerValue(), 0U);
}

TEST(Number, EqualityIsNumericAndExact) {
    constexpr std::int64_t kTwoTo53 = std::int64_t{1} << 53;
    const Number one[] = {
        Number(true), Number(std::int64_t{1}), Number(std::uint64_t{1}), Number(1.0)};
    for (const Number& left : one) {
        for (const Number& right : one) {
            EXPECT_EQ(left, right);
        }
        EXPECT_FALSE(left == Number(1.5));
        EXPECT_FALSE(left == Number(std::int64_t{-1}));
    }
    EXPECT_EQ(Number(kTwoTo53), Number(9007199254740992.0));
    EXPECT_FALSE(Number(kTwoTo53 + 1) == Number(9007199254740992.0));
    EXPECT_FALSE(Number(kMaximum) == Number(9223372036854775808.0));
    EXPECT_EQ(Number(kMinimum), Number(-9223372036854775808.0));
    EXPECT_FALSE(Number(std::int64_t{-1}) == Number(kUnsignedMaximum));
    EXPECT_FALSE(Number(kUnsignedMaximum) == Number(18446744073709551616.0));
}

TEST(Number, TextGivesTheNumberAtItsStart) {
    struct Case {
        const char* text;
        std::int64_t integer;
        float real;
        bool boolean;
    };
    const float infinity = std::numeric_limits<float>::infinity();
    const Case cases[] = {
        {"", 0, 0, false},
        {"42", 42, 42, true},
        {" \t\n-17 apples", -17, -17, true},
        {"+5", 5, 5, true},
        {"+-5", 0, 0, false},
        {"0x10", 0, 0, false},
        {"1.75e2x", 1, 175, true},
        {"1e", 1, 1, true},
        {".5", 0, 0.5F, false},
        {"inf", 0, 0, false},
        {"nan", 0, 0, false},
        {"Yes", 0, 0, true},
        {"true", 0, 0, true},
        {"no", 0, 0, false},
        {"-0007", -7, -7, true},
        {"000y", 0, 0, true},
        {"9223372036854775808", kMaximum, 9223372036854775808.0F, true},
        {"-99999999999999999999", kMinimum, -1e20F, true},
        {"1e999", 1, infinity, true},
        {"-1e999", -1, -infinity, true},
        {"1e-999", 1, 0, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(platform::integerValueOfText(c.text), c.integer);
        EXPECT_EQ(platform::floatValueOfText(c.text), c.real);
        EXPECT_EQ(platform::boolValueOfText(c.text), c.boolean);
    }
}

}  // namespace

}  // namespace quillet::test
