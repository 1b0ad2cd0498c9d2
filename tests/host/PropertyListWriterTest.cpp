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

TEST_P(PropertyListWriter, EveryTextIsReadBackAsItWas) {
    const std::string texts[] = {
        "",
        "plain",
        "fourteen bytes",
        "fifteen bytes !",
        std::string(70000, 'x'),
        "a <b> & \"c\" 'd' ]]> &amp;",
        "line\nfeed, \ttab, return\r, return and line feed\r\n",
        " blanks around ",
        "Zoë Ångström, Дарья, Ελένη, 李娜, ひろし, ليلى, אבי, 🐟",
    };
    for (const std::string& text : texts) {
        SCOPED_TRACE(text.substr(0, 40));
        EXPECT_EQ(readBack(text).stringValue(), text);
    }
}

TEST_P(PropertyListWriter, BrokenTextBecomesReplacementCharacters) {
    EXPECT_EQ(readBack("a\xC3(\xF0\x9F\x90").stringValue(), "a\uFFFD(\uFFFD");
}

TEST_P(PropertyListWriter, EveryNumberIsReadBackWithItsKind) {
    for (const std::int64_t number : {std::int64_t{0},
                                      std::int64_t{255},
                                      std::int64_t{256},
                                      std::int64_t{65536},
                                      std::int64_t{1} << 32,
                                      std::int64_t{-1},
                                      std::numeric_limits<std::int64_t>::min(),
                                      std::numeric_limits<std::int64_t>::max()}) {
        SCOPED_TRACE(number);
        const PropertyListValue value = readBack(number);
        EXPECT_EQ(value.type(), PropertyListType::Integer);
        EXPECT_EQ(value.integerValue(), number);
    }
    for (const bool truth : {false, true}) {
        const PropertyListValue value = readBack(truth);
        EXPECT_EQ(value.type(), PropertyListType::Boolean);
        EXPECT_EQ(value.boolValue(), truth);
    }
    for (const double real : {0.5, -1.25e-7, 1763163889.0, HUGE_VAL, -HUGE_VAL}) {
        SCOPED_TRACE(real);
        const PropertyListValue value = readBack(real);
        EXPECT_EQ(value.type(), PropertyListType::Real);
        EXPECT_EQ(value.floatValue(), static_cast<float>(real));
    }
}

TEST_P(PropertyListWriter, DatesAndDataAreReadBack) {
    constexpr double kDay = 86400;
    for (const double seconds : {0.0, -1.0, 59 * kDay, 820540800.0, -40000 * kDay}) {
        SCOPED_TRACE(seconds);
        EXPECT_EQ(readBack(Date{seconds}).dateValue(), seconds);
    }
    for (const std::string& bytes :
         {std::string(), std::string(1, '\0'), std::string("\xFF\x01"), std::string("abc\x80z")}) {
        EXPECT_EQ(readBack(Data{bytes}).dataValue(), bytes);
    }
}

TEST_P(PropertyListWriter, ContainersKeepTheirOrder) {
    const Value root = Dictionary{
        {"z", Array{Array{}, Dictionary{}, 1, "text", true}},
        {"a", "text"},
        {"é", Dictionary{{"a", 1}}},
    };
    const PropertyListValue value = readBack(root);
    std::string keys;
    for (const PropertyListValue key : value) {
        keys += key.stringValue();
    }
    EXPECT_EQ(keys, "zaé");
    EXPECT_EQ(value.valueForKey("z").count(), 5U);
    EXPECT_EQ(value.valueForKey("é").valueForKey("a").integerValue(), 1);
}

// Crosses the widths of references and offsets: 1, 2 and 4 bytes.
TEST_P(PropertyListWriter, LargeListsAreReadBackWhole) {
    for (const std::int64_t count : {250, 300, 70000}) {
        SCOPED_TRACE(count);
        Array elements;
        std::int64_t sum = 0;
        for (std::int64_t number = 0; number < count; ++number) {
            elements.emplace_back(number);
            sum += number;
        }
        std::int64_t read = 0;
        for (const PropertyListValue element : readBack(elements)) {
            read += element.integerValue();
        }
        EXPECT_EQ(read, sum);
    }
}

TEST(BinaryPropertyListWriter, EqualLeavesAreStoredOnce) {
    const Dictionary message{{"subject", "The same text"}, {"idx", 123456}};
    const auto size = [&](std::size_t count) {
        return writePropertyList(Array(count, message), PropertyListFormat::Binary).size();
    };
    // A further dictionary costs its marker, four references, its own reference and its offset.
    EXPECT_EQ(size(11) - size(10), 7U);
}

}  // namespace
}  // namespace quillet::host
