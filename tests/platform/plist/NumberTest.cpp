#include <cmath>
#include <cstdint>
#include <gmock/gmock.h>
#include <tuple>

#include "platform/plist/Number.h"

namespace quillet::test {
namespace {

using platform::Number;
using Text = const char*;

TEST(Number, ConvertsAsItsKindSays) {
    const std::tuple<Number, std::uint64_t, std::int64_t, float, Text> cases[] = {
        {Number(std::int64_t{-1}), UINT64_MAX, -1, -1, "-1"},
        {Number(UINT64_MAX), UINT64_MAX, -1, 0x1p64F, "18446744073709551615"},
        {Number(std::int64_t{1763163889}), 1763163889, 1763163889, 1763163904, "1763163889"},
        {Number(true), 1, 1, 1, "1"},
        {Number(-2.9), 0, -2, -2.9F, "-2.9"},
        {Number(100000.0), 100000, 100000, 1e5F, "100000"},
        {Number(0x1p63), 1ULL << 63U, INT64_MAX, 0x1p63F, "9.223372036854776e+18"},
        {Number(1e30), UINT64_MAX, INT64_MAX, 1e30F, "1e+30"},
        {Number(-1e30), 0, INT64_MIN, -1e30F, "-1e+30"},
    };
    for (const auto& [number, asUnsigned, asSigned, asFloat, text] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(number.unsignedIntegerValue(), asUnsigned);
        EXPECT_EQ(number.integerValue(), asSigned);
        EXPECT_EQ(number.floatValue(), asFloat);
        EXPECT_TRUE(number.boolValue());
        EXPECT_EQ(number.text(), text);
    }
    EXPECT_FALSE(Number(false).boolValue() || Number(-0.0).boolValue());
    EXPECT_EQ(Number(std::nan("")).integerValue(), 0);
    EXPECT_EQ(Number(std::nan("")).unsignedIntegerValue(), 0U);
}

TEST(Number, EqualityIsNumericAndExact) {
    const std::tuple<Number, Number, bool> cases[] = {
        {Number(true), Number(1.0), true},
        {Number(std::uint64_t{1}), Number(std::int64_t{1}), true},
        {Number(-0x1p63), Number(INT64_MIN), true},
        {Number(true), Number(1.5), false},
        {Number(std::int64_t{1}), Number(1.5), false},
        {Number(std::int64_t{-1}), Number(UINT64_MAX), false},
        {Number(0x1p53), Number((std::int64_t{1} << 53) + 1), false},
        {Number(0x1p63), Number(INT64_MAX), false},
        {Number(0x1p64), Number(UINT64_MAX), false},
    };
    for (const auto& [a, b, equal] : cases) {
        EXPECT_THAT(std::pair(a == b, b == a), testing::Pair(equal, equal)) << a.text();
    }
}

TEST(Number, TextGivesTheNumberAtItsStart) {
    const std::tuple<Text, std::int64_t, float, bool> cases[] = {
        {"", 0, 0, false},
        {" \t\n-17 apples", -17, -17, true},
        {"+5", 5, 5, true},
        {"+-5", 0, 0, false},
        {"0x10", 0, 0, false},
        {"1.75e2x", 1, 175, true},
        {"1e", 1, 1, true},
        {".5", 0, 0.5F, false},
        {"inf", 0, 0, false},
        {"Yes", 0, 0, true},
        {"true", 0, 0, true},
        {"-000y", 0, 0, true},
        {"9223372036854775808", INT64_MAX, 0x1p63F, true},
        {"-99999999999999999999", INT64_MIN, -1e20F, true},
        {"-1e999", -1, -INFINITY, true},
        {"1e-999", 1, 0, true},
    };
    for (const auto& [text, integer, real, boolean] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(platform::integerValueOfText(text), integer);
        EXPECT_EQ(platform::floatValueOfText(text), real);
        EXPECT_EQ(platform::boolValueOfText(text), boolean);
    }
}

}  // namespace
}  // namespace quillet::test
