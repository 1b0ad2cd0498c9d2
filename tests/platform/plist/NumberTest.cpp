#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <tuple>

#include "platform/plist/Number.h"

namespace quillet::test {
namespace {

using platform::Number;

constexpr std::int64_t kMinimum = INT64_MIN;
constexpr std::int64_t kMaximum = INT64_MAX;
constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(Number, ConvertsAsItsKindSays) {
    const struct {
        Number number;
        std::uint64_t asUnsigned;
        std::int64_t asSigned;
        float asFloat;
        const char* text;
    } cases[] = {
        {Number(std::int64_t{-1}), UINT64_MAX, -1, -1, "-1"},
        {Number(UINT64_MAX), UINT64_MAX, -1, 0x1p64F, "18446744073709551615"},
        {Number(std::int64_t{1763163889}), 1763163889, 1763163889, 1763163904, "1763163889"},
        {Number(true), 1, 1, 1, "1"},
        {Number(false), 0, 0, 0, "0"},
        {Number(-2.9), 0, -2, -2.9F, "-2.9"},
        {Number(100000.0), 100000, 100000, 1e5F, "100000"},
        {Number(1e-7), 0, 0, 1e-7F, "1e-07"},
        {Number(0x1p63), std::uint64_t{1} << 63U, kMaximum, 0x1p63F, "9.223372036854776e+18"},
        {Number(1e30), UINT64_MAX, kMaximum, 1e30F, "1e+30"},
        {Number(-1e30), 0, kMinimum, -1e30F, "-1e+30"},
        {Number(double{kInfinity}), UINT64_MAX, kMaximum, kInfinity, "inf"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(row.number.unsignedIntegerValue(), row.asUnsigned);
        EXPECT_EQ(row.number.integerValue(), row.asSigned);
        EXPECT_EQ(row.number.floatValue(), row.asFloat);
        EXPECT_EQ(row.number.boolValue(), row.asFloat != 0);
        EXPECT_EQ(row.number.text(), row.text);
    }
    EXPECT_EQ(Number(std::nan("")).integerValue(), 0);
    EXPECT_EQ(Number(std::nan("")).unsignedIntegerValue(), 0U);
}

TEST(Number, EqualityIsNumericAndExact) {
    const std::tuple<Number, Number, bool> cases[] = {
        {Number(true), Number(1.0), true},
        {Number(std::uint64_t{1}), Number(std::int64_t{1}), true},
        {Number(0x1p53), Number(std::int64_t{1} << 53), true},
        {Number(-0x1p63), Number(kMinimum), true},
        {Number(true), Number(1.5), false},
        {Number(std::int64_t{-1}), Number(UINT64_MAX), false},
        {Number(0x1p53), Number((std::int64_t{1} << 53) + 1), false},
        {Number(0x1p63), Number(kMaximum), false},
        {Number(0x1p64), Number(UINT64_MAX), false},
    };
    for (const auto& [left, right, equal] : cases) {
        EXPECT_EQ(left == right, equal) << left.text() << " " << right.text();
        EXPECT_EQ(right == left, equal) << left.text() << " " << right.text();
    }
}

TEST(Number, TextGivesTheNumberAtItsStart) {
    const struct {
        const char* text;
        std::int64_t integer;
        float real;
        bool boolean;
    } cases[] = {
        {"", 0, 0, false},
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
        {"-0007", -7, -7, true},
        {"000y", 0, 0, true},
        {"9223372036854775808", kMaximum, 0x1p63F, true},
        {"-99999999999999999999", kMinimum, -1e20F, true},
        {"-1e999", -1, -kInfinity, true},
        {"1e-999", 1, 0, true},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(platform::integerValueOfText(row.text), row.integer);
        EXPECT_EQ(platform::floatValueOfText(row.text), row.real);
        EXPECT_EQ(platform::boolValueOfText(row.text), row.boolean);
    }
}

}  // namespace
}  // namespace quillet::test
