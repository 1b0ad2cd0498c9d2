#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "platform/base/Exception.h"
#include "platform/plist/PropertyList.h"
#include "tests/platform/plist/PropertyListTestSupport.h"

namespace quillet::test {
namespace {

using platform::PropertyListDocument;
using platform::PropertyListValue;
using namespace std::string_literals;

const std::string kXmlFile =
    "\xEF\xBB\xBF<?xml version=\"1.0\"?><!DOCTYPE plist PUBLIC \"-//X\" \"http://x\">\n"
    "<plist version=\"1.0\"><dict>\n<key>folder</key><string>In&amp;box \xC3\xA4</string>\r\n"
    "<key>data</key><array><dict><key>idx</key><integer>12</integer><key>r</key><real>1.5</real>"
    "</dict><dict><key>idx</key><integer>-3</integer><key>r</key><real>2</real></dict>"
    "<true/><date>2025-01-01T00:00:00Z</date><data>aGVsbG8=</data><!-- c -->"
    "<string><![CDATA[<x>]]></string></array></dict></plist>";

const std::string kBinaryFile = binaryFile({"\xD2\x01\x02\x03\x04",
                                            ascii("folder"),
                                            ascii("data"),
                                            "\x63\x00 \x00\xE4\xD8\x3D"s,
                                            "\xA7\x05\x05\x06\x07\x08\x09\x0A",
                                            "\xD2\x02\x0B\x0C\x0D",
                                            "\x09",
                                            "\x33\x40\x24\x00\x00\x00\x00\x00\x00"s,
                                            "\x45hello",
                                            "\x80\x07",
                                            "\xA0",
                                            ascii("r"),
                                            "\x10\x0C",
                                            "\x23\x3F\xF8\x00\x00\x00\x00\x00\x00"s});

TEST(PropertyListHostile, FileThatIsCutAtAnyByteIsAnError) {
    PropertyListDocument document;
    for (const std::string& file : {kXmlFile, kBinaryFile}) {
        ASSERT_EQ(kindOfError(file), std::nullopt);
        for (std::size_t size = 0; size < file.size(); ++size) {
            const auto error = document.parse(file.substr(0, size));
            ASSERT_TRUE(error) << size;
            EXPECT_LE(error->offset, size);
            EXPECT_FALSE(document.root());
        }
    }
}

TEST(PropertyListHostile, FileWithMoreValuesThanTheLimitIsRefused) {
    for (const std::size_t values :
         {PropertyListDocument::kMaximumValues, PropertyListDocument::kMaximumValues + 1}) {
        std::string xml = "<array>";
        for (std::size_t value = 1; value < values; ++value) {
            xml += "<dict/>";
        }
        const std::string binary = "bplist00" + std::string(values, '\xA0') +
                                   std::string(values, '\x08') + trailer(values, 8 + values);
        const auto error = values > PropertyListDocument::kMaximumValues
                               ? std::optional(platform::PropertyListErrorKind::TooComplex)
                               : std::nullopt;
        EXPECT_EQ(kindOfError(xml + "</array>"), error);
        EXPECT_EQ(kindOfError(binary), error);
    }
}

TEST(PropertyListValue, ConversionsThatAValueDoesNotHaveRaise) {
    PropertyListDocument document;
    ASSERT_FALSE(
        document.parse("<array><string> 7x</string><array/><dict/><data/>"
                       "<date>2001-01-01T00:00:00Z</date><real>2.5</real></array>"));
    std::vector<PropertyListValue> values(1);  // the first one is absent
    values.insert(values.end(), document.root().begin(), document.root().end());
    using Value = const PropertyListValue&;
    const std::function<void(Value)> conversions[] = {
        [](Value value) { value.unsignedIntegerValue(); },
        [](Value value) { value.integerValue(); },
        [](Value value) { value.floatValue(); },
        [](Value value) { value.boolValue(); },
        [](Value value) { value.numberValue(); },
        [](Value value) { value.stringValue(); },
        [](Value value) { value.valueForKey("k"); },
        [](Value value) { value.begin(); },
    };
    // Which conversions raise: a row for each value, a column for each conversion.
    const std::string expected[] = {
        "XXXXXXXX", "X...X.XX", "XXXXXXX.", "XXXXXX..", "XXXXXXXX", "XXXXXXXX", ".....XXX"};
    ASSERT_EQ(values.size(), std::size(expected));
    for (std::size_t i = 0; i < values.size(); ++i) {
        std::string raised;
        for (const auto& convert : conversions) {
            try {
                convert(values[i]);
                raised += '.';
            } catch (const platform::Exception& exception) {
                EXPECT_FALSE(exception.description().empty());
                raised += 'X';
            }
        }
        EXPECT_EQ(raised, expected[i]) << i;
    }
    EXPECT_EQ(values[1].integerValue(), 7);
    EXPECT_EQ(values[6].unsignedIntegerValue(), 2U);
}

}  // namespace
}  // namespace quillet::test
