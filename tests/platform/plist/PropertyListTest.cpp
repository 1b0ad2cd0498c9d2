#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "platform/base/Exception.h"
#include "platform/plist/PropertyList.h"
#include "tests/platform/plist/PropertyListTestSupport.h"

namespace quillet::test {
namespace {

using ErrorKind = platform::PropertyListErrorKind;
using platform::PropertyListDocument;
using platform::PropertyListKeys;
using platform::PropertyListValue;
using namespace std::string_literals;

const std::string kXmlFile =
    "\xEF\xBB\xBF<?xml version=\"1.0\"?><!DOCTYPE plist PUBLIC \"-//X\" \"http://x\">\n"
    "<plist version=\"1.0\"><dict>\n<key>folder</key><string>In&amp;box \xC3\xA4</string>\r\n"
    "<key>data</key><array><dict><key>idx</key><integer>12</integer><key>r</key><real>1.5</real>"
    "</dict><dict><key>idx</key><integer>-3</integer><key>r</key><real>2</real></dict>"
    "<true/><date>2025-01-01T00:00:00Z</date><data>aGVsbG8=</data><!-- c -->"
    "<string><![CDATA[<x>]]></string></array></dict></plist>";

TEST(PropertyListHostile, FileThatIsCutAtAnyByteIsAnError) {
    PropertyListDocument document;
    const std::string binary = binaryFile({"\xD1\x01\x02", ascii("data"), "\x42\x09\x09"});
    for (const std::string& file : {kXmlFile, binary}) {
        ASSERT_EQ(kindOfError(file), std::nullopt);
        for (std::size_t size = 0; size < file.size(); ++size) {
            const auto error = document.parse(file.substr(0, size));
            ASSERT_TRUE(error && error->offset <= size && !document.root()) << size;
        }
    }
}

TEST(PropertyListHostile, FileWithMoreValuesThanTheLimitIsRefused) {
    // With the array one value more than the limit, which is a power of two.
    constexpr std::size_t kLimit = PropertyListDocument::kMaximumValues;
    std::string elements = "<dict/>";
    for (std::size_t values = 1; values < kLimit; values *= 2) {
        elements += elements;
    }
    EXPECT_EQ(kindOfError("<array>" + elements + "</array>"), ErrorKind::TooComplex);
    const std::string objects(kLimit + 1, '\xA0');
    const std::string table(kLimit + 1, '\x08');
    EXPECT_EQ(kindOfError("bplist00" + objects + table + trailer(kLimit + 1, 9 + kLimit)),
              ErrorKind::TooComplex);
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
    for (std::size_t i = 0; i < values.size(); ++i) {
        std::string raised;
        for (const auto& convert : conversions) {
            try {
                convert(values[i]);
                raised += '.';
            } catch (const platform::Exception&) {
                raised += 'X';
            }
        }
        EXPECT_EQ(raised, expected[i]) << i;
    }
    EXPECT_EQ(values[1].integerValue(), 7);
    EXPECT_EQ(values[6].unsignedIntegerValue(), 2U);
}

constexpr std::array<std::string_view, 3> kKeys{"a", "b&c", "d"};

// Finds the keys in one element of the list after another and compares with a look-up of each.
void expectKeysFound(PropertyListKeys& keys, const PropertyListValue& list) {
    std::array<PropertyListValue, kKeys.size()> found;
    for (const PropertyListValue element : list) {
        found.fill(element);  // old values must go
        if (element.type() != platform::PropertyListType::Dictionary) {
            EXPECT_THROW(keys.find(element, found), platform::Exception);
            EXPECT_FALSE(found[0]);
            continue;
        }
        keys.find(element, found);
        for (std::size_t i = 0; i < found.size(); ++i) {
            EXPECT_EQ(dump(found[i]), dump(element.valueForKey(kKeys[i])));
        }
    }
}

const std::string kElements[] = {
    "<string>a</string>",
    "<dict/>",
    "<dict><key>a</key><string>x</string></dict>",
    "<dict><key>a</key><string>&lt;</string ></dict>",
    "<dict><key>a</key><string>x</string><key>d</key><integer>1</integer></dict>",
    "<dict><key>a</key><string>y</string><key>d</key><integer> -1<!-- -->2</integer></dict>",
    "<dict><key>a</key><string>x</string><key>e</key><integer>1</integer></dict>",
    "<dict><key>d</key><string>x</string><key>a</key><integer>1</integer></dict>",
    "<dict><key>a</key><true/><key>a</key><integer>1</integer></dict>",
    "<dict><key>a</key>" + std::string(400, ' ') + "<true/><key>d</key><true/></dict>",
    "<dict><key>b&amp;c</key><true/></dict>",
    "<dict><key>b&#38;c</key><true/></dict>",
    "<!-- --><dict> <key>a</key><dict><key>a</key><true/></dict><key>d</key><true/></dict>",
    "<dict><key>a</key><array><true/></array><key>d</key><true/></dict>"};

// What the reader remembers of earlier ones must hide no difference.
TEST(PropertyListKeys, DictionariesLikeTheOnesBeforeReadAsTheyReadAloneAndGiveTheirOwnValues) {
    std::mt19937 random(20251114);  // NOLINT(bugprone-random-generator-seed): repeatable
    PropertyListKeys keys(kKeys);
    PropertyListDocument kept;
    for (int i = 0; i < 600 && !testing::Test::HasFailure(); ++i) {
        // Two of three elements are of one kind.
        const auto common = random() % std::size(kElements);
        std::string file = "<array>";
        std::string expected;
        for (auto elements = 1 + random() % 20; elements > 0; --elements) {
            const auto other = random() % std::size(kElements);
            const std::string& element = kElements[random() % 3 == 0 ? other : common];
            file += element;
            expected += (expected.empty() ? "[" : ",") + parsed(element);
        }
        PropertyListDocument fresh;  // often at the address of an earlier one
        PropertyListDocument& document = i % 2 == 0 ? kept : fresh;
        const auto error = document.parse(file + "</array>");
        ASSERT_FALSE(error) << file << error->description();
        EXPECT_EQ(dump(document.root()), expected + "]") << file;
        expectKeysFound(keys, document.root());
    }
}

TEST(PropertyListKeys, FindsTheSameInBinaryFiles) {
    PropertyListKeys keys(kKeys);
    PropertyListDocument document;
    const std::vector<std::string> dictionaries{"\xA4\x01\x02\x03\x04",
                                                "\xD2\x05\x06\x07\x08",
                                                "\xD2\x05\x06\x08\x07",
                                                "\xD2\x06\x05\x07\x08",
                                                "\xD2\x05\x05\x07\x08",
                                                ascii("a"),
                                                ascii("d"),
                                                "\x10\x01",
                                                "\x09"};
    ASSERT_FALSE(document.parse(binaryFile(dictionaries)));
    expectKeysFound(keys, document.root());
}

}  // namespace
}  // namespace quillet::test
