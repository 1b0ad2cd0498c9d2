#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "platform/plist/PropertyList.h"
#include "tests/platform/plist/PropertyListTestSupport.h"

namespace quillet::test {
namespace {

using platform::PropertyListDocument;
using Kind = platform::PropertyListErrorKind;

// The file in UTF-16 with a byte-order mark; the characters must be of the basic plane.
std::string utf16(std::u16string_view text, bool bigEndianOrder) {
    std::string bytes;
    for (const char16_t unit : u"\uFEFF" + std::u16string(text)) {
        const char high = static_cast<char>(unit >> 8U);
        const char low = static_cast<char>(unit & 0xFFU);
        bytes += bigEndianOrder ? high : low;
        bytes += bigEndianOrder ? low : high;
    }
    return bytes;
}

// Forms that the library of the differential test does not write.
TEST(PropertyListXml, ValuesReadAsWritten) {
    const std::pair<const char*, const char*> cases[] = {
        // inside <plist>
        {"<string/>", "\"\""},
        {"<string kind='a>b'>x</string  >", "\"x\""},
        {"<string>&amp;&lt;&gt;&quot;&apos;&#65;&#x1F600;</string>", "\"&<>\"'A\xF0\x9F\x98\x80\""},
        {"<string>a<![CDATA[<b>&amp;]]>c<!-- no -->d<?no?>e</string>", "\"a<b>&amp;cde\""},
        // A comment or an instruction does not end with the characters that open it.
        {"<string>a<!-->b-->c<?>d?>e</string>", "\"ace\""},
        {"<string>x<!--><![CDATA[y--></string>", "\"x\""},
        {"<string>x<?><![CDATA[y?></string>", "\"x\""},
        {"<dict><key>x<!--><![CDATA[y--></key><true/></dict>", "{\"x\":true}"},
        {"<string>1\r\n2\r3\n4&#13;<![CDATA[\r\n]]></string>", "\"1\n2\n3\n4\r\n\""},
        {"<string>a]]>b</string>", "\"a]]>b\""},
        {"<integer> +0xFf </integer>", "255"},
        {"<integer>-0x10</integer>", "-16"},
        {"<integer>18446744073709551615</integer>", "18446744073709551615"},
        {"<integer>-9223372036854775808</integer>", "-9223372036854775808"},
        {"<integer>1<!-- -->2</integer>", "12"},
        {"<real>1.5e3</real>", "1500r"},
        {"<real>-Infinity</real>", "-infr"},
        {"<real>+inf</real>", "infr"},
        {"<real>NaN</real>", "nanr"},
        {"<real>1e400</real>", "infr"},
        {"<false></false>", "false"},
        {"<date>2024-02-29T12:00:00Z</date>", "730900800d"},
        {"<data>\n aGVs\n bG8=\n</data>", "<hello>"},
        {"<data>aG<!-- -->V5</data>", "<hey>"},
        {"<data/>", "<>"},
        {"<dict><key>k</key><dict/><key>j</key><true/><key>&#107;</key><real>2</real></dict>",
         "{\"k\":2r,\"j\":true}"},
    };
    for (const auto& [xml, dumped] : cases) {
        EXPECT_EQ(parsed("<plist version=\"1.0\">" + std::string(xml) + "</plist>"), dumped) << xml;
    }
}

TEST(PropertyListXml, EveryAllowedFrameIsAccepted) {
    const std::string files[] = {
        "<string>ok</string>",
        "\xEF\xBB\xBF<plist><string>ok</string></plist>",
        " \n<?xml version='1.0'?><!-- - -->\n<plist>\n<string>ok</string></plist>\n",
        "<!DOCTYPE plist PUBLIC \"-//A>//\" 'http://x/y>'><plist><string>ok</string></plist>",
        "<!DOCTYPE p [<!-- <!ENTITY --><!ELEMENT a ANY>]><plist><string>ok</string></plist><?p?>",
        utf16(u"<?xml version='1.0' encoding='UTF-16'?><string>ok</string>", true),
        utf16(u"<plist><string>ok</string></plist>", false),
    };
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        EXPECT_EQ(parsed(file), "\"ok\"");
    }
    EXPECT_EQ(parsed(utf16(u"<string>\u00E4\u20AC</string>", true)), "\"\xC3\xA4\xE2\x82\xAC\"");
}

TEST(PropertyListXml, BrokenFilesAreErrorsWithTheirPlace) {
    struct Case {
        std::string file;
        Kind kind;
        std::size_t offset;
    };
    const auto entry = [](const std::string& value) {
        return "<dict><key>a</key>" + value + "</dict>";
    };
    const Case cases[] = {
        {"", Kind::Empty, 0},
        {"{\"json\": 1}", Kind::UnknownFormat, 0},
        {"<", Kind::Malformed, 1},
        {"<plist/>", Kind::Malformed, 0},
        {"<plist></plist>", Kind::Malformed, 7},
        {"<plist><true/><true/></plist>", Kind::Malformed, 14},
        {"<true/>x", Kind::Malformed, 7},
        {"<frob>1</frob>", Kind::Malformed, 0},
        {"<string\xC3\xA9 a='b'>x</string>", Kind::Malformed, 0},
        {"<string>a<b/></string>", Kind::Malformed, 9},
        {"<string>a</strong>", Kind::Malformed, 9},
        {"<string>&nbsp;</string>", Kind::Malformed, 8},
        {"<string>&#0;</string>", Kind::Malformed, 8},
        {"<string>&#xD800;</string>", Kind::Malformed, 8},
        {"<string>&amp</string>", Kind::Malformed, 8},
        {std::string("<string>\0</string>", 18), Kind::Malformed, 8},
        {"<string>\xEF\xBF\xBF</string>", Kind::Malformed, 8},
        {"<string>\xC0\x80</string>", Kind::InvalidText, 8},
        {"<string>\xED\xA0\x80</string>", Kind::InvalidText, 8},
        {"<string>\xF4\x90\x80\x80</string>", Kind::InvalidText, 8},
        {"<string>" + std::string(200, 'x') + "\xE2\x82</string>", Kind::InvalidText, 208},
        {"<string>&amp;\x01</string>", Kind::Malformed, 13},
        {"<string><![CDATA[\xFF]]></string>", Kind::InvalidText, 17},
        {"<string a='\xFF'>x</string>", Kind::InvalidText, 11},
        {"<!-- \xC3 --><true/>", Kind::InvalidText, 5},
        {"<?p \x01?><true/>", Kind::Malformed, 4},
        {"<!DOCTYPE p '\xFF'><true/>", Kind::InvalidText, 13},
        {"<true/><!-- \xEF\xBF\xBE -->", Kind::Malformed, 12},
        {std::string("<true/>\0", 8), Kind::Malformed, 7},
        {"<integer/>", Kind::Malformed, 10},
        {"<integer>1x</integer>", Kind::Malformed, 9},
        {"<integer>18446744073709551616</integer>", Kind::Malformed, 9},
        {"<integer>-9223372036854775809</integer>", Kind::Malformed, 9},
        {"<real>1.5.2</real>", Kind::Malformed, 6},
        {"<true>x</true>", Kind::Malformed, 6},
        {"<date>2025-02-29T00:00:00Z</date>", Kind::Malformed, 6},
        {"<date>2025-02-28T24:00:00Z</date>", Kind::Malformed, 6},
        {"<data>a*==</data>", Kind::Malformed, 6},
        {"<data>aaaaa</data>", Kind::Malformed, 6},
        {"<dict><string>a</string></dict>", Kind::Malformed, 6},
        {"<dict><key>a</key></dict>", Kind::Malformed, 18},
        {"<array><true/></dict>", Kind::Malformed, 14},
        // What is remembered of earlier dictionaries hides no error.
        {"<array>" + entry("<integer>1</integer>") + "<dict><key>a</key><integer>x</integer>",
         Kind::Malformed,
         79},
        {"<array>" + entry("<string>1</string>") + "<dict><key>a</key><string>x</integer>",
         Kind::Malformed,
         77},
        {"<array>" + entry("<true/>") + entry("<true/>") + "<dict><key>a</key>" + entry("<true/>") +
             entry("<true/>") + "</dict></array>",
         Kind::Malformed,
         121},
        {"<!DOCTYPE p [<!ENTITY a \"b\">]><true/>", Kind::EntityDeclared, 13},
        {"<!DOCTYPE p [<!ELEMENT", Kind::Malformed, 12},
        {utf16(u"<string>\u00E4<x", true), Kind::Malformed, 20},
        {utf16(u"<true/>", true) + "x", Kind::InvalidText, 16},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        expectError(c.file, c.kind, c.offset);
    }
}

TEST(PropertyListXml, NestingHasALimit) {
    const auto nested = [](std::size_t depth) {
        std::string file;
        for (std::size_t i = 0; i < depth; ++i) {
            file += i % 2 == 0 ? "<array>" : "<dict><key>k</key>";
        }
        file += "<true/>";
        for (std::size_t i = depth; i > 0; --i) {
            file += i % 2 == 1 ? "</array>" : "</dict>";
        }
        return file;
    };
    EXPECT_EQ(kindOfError(nested(PropertyListDocument::kMaximumDepth)), std::nullopt);
    EXPECT_EQ(kindOfError(nested(PropertyListDocument::kMaximumDepth + 1)), Kind::TooDeep);
    EXPECT_EQ(kindOfError(nested(1'000'000)), Kind::TooDeep);
}

}  // namespace
}  // namespace quillet::test
