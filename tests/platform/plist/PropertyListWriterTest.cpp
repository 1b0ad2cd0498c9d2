#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "platform/plist/PropertyListWriter.h"
#include "tests/platform/plist/PropertyListTestSupport.h"

namespace quillet::test {
namespace {

using namespace platform::PropertyListTree;

// What the reader makes of the written value.
std::string readBack(const Value& root) {
    return parsed(platform::writeBinaryPropertyList(root));
}

TEST(PropertyListWriter, EveryTextIsReadBackAsItWasOrWithReplacementCharacters) {
    const std::string texts[] = {
        "",
        "fourteen bytes",
        "fifteen bytes !",
        std::string(70000, 'x'),
        "a <b> & 'd' ]]> &amp;",
        " line\nfeed, \ttab, return\r, return and line feed\r\n",
        "Zoë, Дарья, 李娜, ليلى, אבי, 🐟",
    };
    for (const std::string& text : texts) {
        SCOPED_TRACE(text.substr(0, 40));
        EXPECT_EQ(readBack(text), '"' + text + '"');
    }
    EXPECT_EQ(readBack("a\xC3(\xF0\x9F\x90"), "\"a\uFFFD(\uFFFD\"");
}

TEST(PropertyListWriter, EveryOtherKindIsReadBack) {
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    const Value value =
        Dictionary{{"z", Array{255, 256, std::int64_t{1} << 32, -1, kLeast, -(kLeast + 1)}},
                   {"a", Array{0.5, -1.25e-7, 1763163889.0, -HUGE_VAL}},
                   {"é", Array{Date{0}, Date{-1}, Date{59 * 86400.0}, Date{-40000 * 86400.0}}},
                   {"b", Array{Data{""}, Data{std::string(1, '\0')}, Data{"ab\xFF\x01"}}},
                   {"c", Array{Array{}, Dictionary{}, "text", true, false}}};
    EXPECT_EQ(readBack(value),
              "{\"z\":[255,256,4294967296,-1,-9223372036854775808,9223372036854775807],"
              "\"a\":[0.5r,-1.25e-07r,1763163889r,-infr],"
              "\"é\":[0d,-1d,5097600d,-3456000000d],"
              "\"b\":[<>,<" +
                  std::string(1, '\0') +
                  ">,<ab\xFF\x01>],"
                  "\"c\":[[],{},\"text\",true,false]}");
}

// Crosses the widths of references and offsets: 1, 2 and 4 bytes.
TEST(PropertyListWriter, LargeListsAreReadBackWhole) {
    for (const std::int64_t count : {250, 300, 70000}) {
        SCOPED_TRACE(count);
        Array elements;
        std::string expected;
        for (std::int64_t number = 0; number < count; ++number) {
            elements.emplace_back(number);
            expected += (number > 0 ? "," : "[") + std::to_string(number);
        }
        EXPECT_EQ(readBack(elements), expected + "]");
    }
}

}  // namespace
}  // namespace quillet::test
