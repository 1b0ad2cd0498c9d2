#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "platform/base/Exception.h"
#include "platform/plist/PropertyList.h"
#include "tests/platform/plist/PropertyListTestSupport.h"

namespace quillet::test {

namespace {

using platform::PropertyListDocument;
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

// Reads the file and, where it is good, every value. The steps may not exceed the file's budget.
// `document` is one that has held other files before.
bool readsWhole(PropertyListDocument& document, const std::string& file) {
    const auto error = document.parse(file);
    if (error) {
        EXPECT_FALSE(document.root());
        EXPECT_LE(error->offset, file.size());
        return false;
    }
    std::size_t visits = 0;
    dump(document.root(), &visits);
    EXPECT_LE(visits, PropertyListDocument::kVisitsBase + file.size());
    return true;
}

TEST(PropertyListHostile, FileThatIsCutAtAnyByteIsAnError) {
    PropertyListDocument document;
    for (const std::string& file : {kXmlFile, kBinaryFile}) {
        ASSERT_TRUE(readsWhole(document, file));
        for (std::size_t size = 0; size < file.size(); ++size) {
            SCOPED_TRACE(size);
            EXPECT_FALSE(readsWhole(document, file.substr(0, size)));
        }
    }
}

TEST(PropertyListHostile, FlippedBitsNeverLeadAstray) {
    constexpr int kRounds = 4000;
    constexpr std::size_t kMostFlips = 4;
    std::mt19937 random(20251114);  // NOLINT(bugprone-random-generator-seed): repeatable
    PropertyListDocument document;
    int good = 0;
    for (const std::string& file : {kXmlFile, kBinaryFile}) {
        for (int round = 0; round < kRounds; ++round) {
            std::string flipped = file;
            for (std::size_t flips = random() % kMostFlips + 1; flips > 0; --flips) {
                char& byte = flipped[random() % flipped.size()];
                byte = static_cast<char>(byte ^ (1U << random() % 8));
            }
            good += readsWhole(document, flipped) ? 1 : 0;
        }
    }
    // Most flips of a text give another text, so many files must still be good.
    EXPECT_GT(good, kRounds / 4);
}

TEST(PropertyListHostile, MarkupAtAnyPlaceNeverLeadsAstray) {
    constexpr int kRounds = 20000;
    constexpr std::size_t kMostPieces = 6;
    std::istringstream markups(
        "<!--|-->|<!-->|<![CDATA[|]]>|<?|?>|<?>|&|&lt;|\r|</string>|<dict>|</dict>|\xC3");
    std::vector<std::string> pieces;
    for (std::string piece; std::getline(markups, piece, '|');) {
        pieces.push_back(piece);
    }
    const std::string file =
        "<array><dict><key>a b</key><string>one two</string><key>c</key><true/></dict>"
        "<dict><key>a b</key><string>three</string><key>c</key><string>x</string></dict></array>";
    std::mt19937 random(20251114);  // NOLINT(bugprone-random-generator-seed): repeatable
    PropertyListDocument document;
    int good = 0;
    for (int round = 0; round < kRounds; ++round) {
        std::string markup;
        for (std::size_t left = random() % kMostPieces + 1; left > 0; --left) {
            markup += pieces[random() % pieces.size()];
        }
        std::string changed = file;
        changed.insert(random() % changed.size(), markup);
        good += readsWhole(document, changed) ? 1 : 0;
    }
    EXPECT_GT(good, kRounds / 100);
}

TEST(PropertyListHostile, FileWithMoreValuesThanTheLimitIsRefused) {
    for (const std::size_t values :
         {PropertyListDocument::kMaximumValues, PropertyListDocument::kMaximumValues + 1}) {
        std::string xml = "<array>";
        for (std::size_t value = 1; value < values; ++value) {
            xml += "<dict/>";
        }
        const std::string binary = "bplist00" + std::string(values, '\xA0') +
                                   std::string(values, '\x08') + bigEndian(0, 6) + "\x01\x01" +
                                   bigEndian(values, 8) + bigEndian(0, 8) +
                                   bigEndian(8 + values, 8);
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
    std::vector<platform::PropertyListValue> values(1);  // the first one is absent
    for (const auto value : document.root()) {
        values.push_back(value);
    }
    // Which conversions raise: unsigned, signed, float, bool, number, string, look-up, loop.
    const std::string expected[] = {
        "XXXXXXXX", "X...X.XX", "XXXXXXX.", "XXXXXX..", "XXXXXXXX", "XXXXXXXX", ".....XXX"};
    ASSERT_EQ(values.size(), std::size(expected));
    for (std::size_t i = 0; i < values.size(); ++i) {
        SCOPED_TRACE(i);
        const auto& value = values[i];
        std::string raised;
        const auto attempt = [&raised](auto conversion) {
            try {
                conversion();
                raised += '.';
            } catch (const platform::Exception& exception) {
                EXPECT_FALSE(exception.description().empty());
                raised += 'X';
            }
        };
        attempt([&] { value.unsignedIntegerValue(); });
        attempt([&] { value.integerValue(); });
        attempt([&] { value.floatValue(); });
        attempt([&] { value.boolValue(); });
        attempt([&] { value.numberValue(); });
        attempt([&] { value.stringValue(); });
        attempt([&] { value.valueForKey("k"); });
        attempt([&] { value.begin(); });
        EXPECT_EQ(raised, expected[i]);
    }
    EXPECT_EQ(values[1].integerValue(), 7);
    EXPECT_EQ(values[6].unsignedIntegerValue(), 2U);
}

}  // namespace

}  // namespace quillet::test
