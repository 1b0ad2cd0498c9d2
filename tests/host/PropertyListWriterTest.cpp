#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "host/PropertyListWriter.h"
#include "platform/foundation/PropertyList.h"

namespace quillet::host {
namespace {

using platform::PropertyListDocument;
using platform::PropertyListType;
using platform::PropertyListValue;

class PropertyListWriter : public testing::TestWithParam<PropertyListFormat> {
protected:
    // What the widget's own reader makes of the written value.
    PropertyListValue readBack(const Value& root) {
        const auto error = document_.parse(writePropertyList(root, GetParam()));
        EXPECT_FALSE(error) << error->description();
        return document_.root();
    }

    PropertyListDocument document_;
};

INSTANTIATE_TEST_SUITE_P(,
                         PropertyListWriter,
                         testing::Values(PropertyListFormat::Xml, PropertyListFormat::Binary),
                         [](const auto& format) {
                             return format.param == PropertyListFormat::Xml ? "Xml" : "Binary";
                         });

TEST_P(PropertyListWriter, EveryTextIsReadBackAsItWasOrWithReplacementCharacters) {
    const std::string texts[] = {
        "",
        "fourteen bytes",
        "fifteen bytes !",
        std::string(70000, 'x'),
        "a <b> & \"c\" 'd' ]]> &amp;",
        " line\nfeed, \ttab, return\r, return and line feed\r\n",
        "Zoë Ångström, Дарья, Ελένη, 李娜, ひろし, ليلى, אבי, 🐟",
    };
    for (const std::string& text : texts) {
        SCOPED_TRACE(text.substr(0, 40));
        EXPECT_EQ(readBack(text).stringValue(), text);
    }
    EXPECT_EQ(readBack("a\xC3(\xF0\x9F\x90").stringValue(), "a\uFFFD(\uFFFD");
}

TEST_P(PropertyListWriter, EveryOtherKindIsReadBack) {
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    for (const std::int64_t number : {std::int64_t{255},
                                      std::int64_t{256},
                                      std::int64_t{1} << 32,
                                      std::int64_t{-1},
                                      kLeast,
                                      -(kLeast + 1)}) {
        EXPECT_EQ(readBack(number).integerValue(), number);
    }
    for (const double real : {0.5, -1.25e-7, 1763163889.0, -HUGE_VAL}) {
        EXPECT_EQ(readBack(real).floatValue(), static_cast<float>(real));
    }
    for (const double seconds : {0.0, -1.0, 59 * 86400.0, -40000 * 86400.0}) {
        EXPECT_EQ(readBack(Date{seconds}).dateValue(), seconds);
    }
    for (const std::string& bytes :
         {std::string(), std::string(1, '\0'), std::string("ab\xFF\x01")}) {
        EXPECT_EQ(readBack(Data{bytes}).dataValue(), bytes);
    }
    const PropertyListValue value = readBack(Dictionary{
        {"z", Array{Array{}, Dictionary{}, 1, "text", true}}, {"a", false}, {"é", "text"}});
    std::string keys;
    for (const PropertyListValue key : value) {
        keys += key.stringValue();
    }
    EXPECT_EQ(keys, "zaé");
    EXPECT_EQ(value.valueForKey("z").count(), 5U);
    EXPECT_EQ(value.valueForKey("a").type(), PropertyListType::Boolean);
}

// Crosses the widths of references and offsets: 1, 2 and 4 bytes.
TEST_P(PropertyListWriter, LargeListsAreReadBackWhole) {
    for (const std::int64_t count : {250, 300, 70000}) {
        SCOPED_TRACE(count);
        Array elements;
        for (std::int64_t number = 0; number < count; ++number) {
            elements.emplace_back(number);
        }
        std::int64_t expected = 0;
        for (const PropertyListValue element : readBack(elements)) {
            ASSERT_EQ(element.integerValue(), expected++);
        }
        EXPECT_EQ(expected, count);
    }
}

}  // namespace
}  // namespace quillet::host
