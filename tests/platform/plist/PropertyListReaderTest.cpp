#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "platform/plist/PropertyList.h"
#include "tests/platform/plist/PropertyListTestSupport.h"

namespace quillet::test {
namespace {

using platform::PropertyListDocument;
using Kind = platform::PropertyListErrorKind;
using namespace std::string_literals;

void expectError(std::string_view file, Kind kind, std::size_t offset) {
    const auto error = PropertyListDocument().parse(file);
    EXPECT_TRUE(error && error->kind == kind && error->offset == offset)
        << (error ? error->description() : "no error");
}

// The file in UTF-16 with a byte-order mark.
std::string utf16(std::u16string_view text, bool bigEndianOrder) {
    std::string bytes;
    for (const unsigned unit : u"\uFEFF" + std::u16string(text)) {
        bytes += bigEndian(bigEndianOrder ? unit : (unit << 8U | unit >> 8U), 2);
    }
    return bytes;
}

// Forms that the library of the differential test does not write.
TEST(PropertyListXml, ValuesReadAsWritten) {
    const std::pair<const char*, const char*> cases[] = {
        {"<string/>", "\"\""},
        {"<string kind='a>b'>x</string  >", "\"x\""},
        {"<string>&amp;&lt;&gt;&quot;&apos;&#65;&#x1F600;</string>", "\"&<>\"'A\xF0\x9F\x98\x80\""},
        {"<string>a<![CDATA[<b>&amp;]]>c<!-- no -->d<?no?>e</string>", "\"a<b>&amp;cde\""},
        // A comment or an instruction does not end with the characters that open it.
        {"<string>a<!-->b-->c<?>d?>e</string>", "\"ace\""},
        {"<string>x<!--><![CDATA[y--></string>", "\"x\""},
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
        {"<real>NaN</real>", "nanr"},
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
        EXPECT_EQ(parsed(file), "\"ok\"") << file;
    }
    EXPECT_EQ(parsed(utf16(u"<string>\u00E4\u20AC</string>", true)), "\"\xC3\xA4\xE2\x82\xAC\"");
}

TEST(PropertyListXml, BrokenFilesAreErrorsWithTheirPlace) {
    const std::string key = "<dict><key>a</key>";
    const std::string known = key + "<true/></dict>";
    const std::tuple<std::string, Kind, std::size_t> cases[] = {
        {"", Kind::Empty, 0},
        {"{\"json\": 1}", Kind::UnknownFormat, 0},
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
        {"<string>&amp</string>", Kind::Malformed, 8},
        {"<string>\0</string>"s, Kind::Malformed, 8},
        {"<string>\xEF\xBF\xBF</string>", Kind::Malformed, 8},
        {"<string>\xED\xA0\x80</string>", Kind::InvalidText, 8},
        {"<string>" + std::string(200, 'x') + "\xE2\x82</string>", Kind::InvalidText, 208},
        {"<string>&amp;\x01</string>", Kind::Malformed, 13},
        {"<string><![CDATA[\xFF]]></string>", Kind::InvalidText, 17},
        {"<string a='\xFF'>x</string>", Kind::InvalidText, 11},
        {"<!-- \xC3 --><true/>", Kind::InvalidText, 5},
        {"<?p \x01?><true/>", Kind::Malformed, 4},
        {"<!DOCTYPE p '\xFF'><true/>", Kind::InvalidText, 13},
        {"<true/>\0"s, Kind::Malformed, 7},
        {"<integer/>", Kind::Malformed, 10},
        {"<integer>1x</integer>", Kind::Malformed, 9},
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
        {"<array>" + known + key + "<integer>x</integer>", Kind::Malformed, 66},
        {"<array>" + known + key + "<string>x</integer>", Kind::Malformed, 66},
        {"<array>" + known + known + key + known + known, Kind::Malformed, 121},
        {"<!DOCTYPE p [<!ENTITY a \"b\">]><true/>", Kind::EntityDeclared, 13},
        {utf16(u"<string>\u00E4<x", true), Kind::Malformed, 20},
        {utf16(u"<true/>", true) + "x", Kind::InvalidText, 16},
    };
    for (const auto& [file, kind, offset] : cases) {
        SCOPED_TRACE(file);
        expectError(file, kind, offset);
    }
}

TEST(PropertyListXml, NestingHasALimit) {
    std::string start;
    std::string end;
    for (std::size_t depth = 0; depth < PropertyListDocument::kMaximumDepth; depth += 2) {
        start += "<array><dict><key>k</key>";
        end += "</dict></array>";
    }
    EXPECT_EQ(kindOfError(start + "<true/>" + end), std::nullopt);
    EXPECT_EQ(kindOfError(start + "<array/>" + end), Kind::TooDeep);
}

std::string number(std::uint64_t value) {
    return bigEndian(value, 8);
}

// Forms that the library of the differential test does not write.
TEST(PropertyListBinary, ValuesReadAsWritten) {
    const std::pair<std::string, const char*> cases[] = {
        {"\x00"s, "(null)"},
        {"\x12\xFF\xFF\xFF\xFF"s, "4294967295"},
        {"\x14" + number(0) + number(~0ULL), "18446744073709551615"},
        {"\x14" + std::string(15, '\xFF') + "\xFE", "-2"},
        {"\x22\x3F\xC0\x00\x00"s, "1.5r"},
        {"\x5F\x13" + number(3) + "abc", "\"abc\""},
        {"\x72\xC3\xA4"s, "\"\xC3\xA4\""},
        {"\x62\xDE\x00\xD8\x3D"s, "\"\xEF\xBF\xBD\xEF\xBF\xBD\""},  // lone surrogates
        {"\x81\x01\x02"s, "uid258"},
        {"\xB2\x01\x01", "[true,true]"},
        {"\xC1\x01", "[true]"},
    };
    for (const auto& [object, dumped] : cases) {
        // The last object is broken, which does not matter without references to it.
        EXPECT_EQ(parsed(binaryFile({object, "\x09", "\x90"})), dumped);
    }
}

TEST(PropertyListBinary, ReferencesAndOffsetsMayHaveEveryWidth) {
    for (std::size_t widths = 0; widths < 64; ++widths) {
        const std::size_t width = widths / 8 + 1;
        const auto withValue = [&](std::uint64_t reference) {
            const std::string keyAndValue = bigEndian(1, width) + bigEndian(reference, width);
            return parsed(binaryFile({"\xD1" + keyAndValue, ascii("a")}, width, widths % 8 + 1));
        };
        EXPECT_EQ(withValue(1), R"({"a":"a"})");
        EXPECT_EQ(withValue(2), "a reference to no object at byte 8");
        EXPECT_EQ(withValue(~0ULL), "a reference to no object at byte 8");
    }
}

TEST(PropertyListBinary, BrokenFilesAreErrorsWithTheirPlace) {
    const auto patched = [](std::size_t fromEnd, std::uint64_t value, std::size_t width) {
        std::string file = binaryFile({"\x09"});
        return file.replace(file.size() - fromEnd, width, bigEndian(value, width));
    };
    const std::tuple<const char*, std::size_t, std::string, Kind> cases[] = {
        {"only a start", 8, "bplist00", Kind::Malformed},
        {"offsets without width", 16, patched(26, 0, 1), Kind::Malformed},
        {"offsets too wide", 16, patched(26, 9, 1), Kind::Malformed},
        {"references without width", 17, patched(25, 0, 1), Kind::Malformed},
        {"countless objects", 18, patched(24, ~0ULL, 8), Kind::Malformed},
        {"root is no object", 26, patched(16, 1, 8), Kind::Malformed},
        {"table in the header", 34, patched(8, 3, 8), Kind::Malformed},
        {"table behind the end", 34, patched(8, ~0ULL, 8), Kind::Malformed},
        {"offset in the table", 9, patched(33, 9, 1), Kind::Malformed},
        {"offset in the header", 9, patched(33, 7, 1), Kind::Malformed},
        {"fill byte", 8, binaryFile({"\x0F"}), Kind::Malformed},
        {"unknown kind", 8, binaryFile({"\x90"}), Kind::Malformed},
        {"cut integer", 8, binaryFile({"\x13 1234"}), Kind::Malformed},
        {"integer of 32 bytes", 8, binaryFile({"\x15" + std::string(32, '\0')}), Kind::Malformed},
        {"integer too large", 8, binaryFile({"\x14" + number(1) + number(0)}), Kind::Malformed},
        {"real of 2 bytes", 8, binaryFile({"\x21 12"}), Kind::Malformed},
        {"endless text", 8, binaryFile({"\x5F\x13" + number(~0ULL) + "abc"}), Kind::Malformed},
        {"size that is no integer", 8, binaryFile({"\x5F" + ascii("a") + "bc"}), Kind::Malformed},
        {"invalid text", 10, binaryFile({"\xA1\x01", ascii(" \xC3")}), Kind::InvalidText},
        {"UID of 9 bytes", 8, binaryFile({"\x88 12345678"}), Kind::Malformed},
        {"cut dictionary", 8, binaryFile({"\xD2\x00\x00"s}), Kind::Malformed},
        {"key that is no text", 8, binaryFile({"\xD1\x01\x01", "\x09"}), Kind::Malformed},
        {"key that is no object", 8, binaryFile({"\xD1\x07\x00"s}), Kind::Malformed},
        {"cycle", 8, binaryFile({"\xA1\x00"s}), Kind::Cyclic},
        {"longer cycle", 8, binaryFile({"\xD1\x02\x01", "\xA1\x00"s, ascii("k")}), Kind::Cyclic},
    };
    for (const auto& [name, offset, file, kind] : cases) {
        SCOPED_TRACE(name);
        expectError(file, kind, offset);
    }
}

TEST(PropertyListBinary, SharedReferencesThatUnfoldTooFarAreRefused) {
    std::vector<std::string> objects;  // 2^levels values in a few bytes
    for (char level = 1; level <= 24; ++level) {
        objects.push_back("\xA2"s + level + level);
    }
    objects.emplace_back("\x50");
    EXPECT_EQ(kindOfError(binaryFile(objects)), Kind::TooComplex);

    // A long text counts at each place when it is a key, or when the reader copies it.
    PropertyListDocument document;
    const auto listOf = [](std::size_t count) {
        return "\xAF\x12" + bigEndian(count, 4) + std::string(count, '\x01');
    };
    const std::string longText = "\x5F\x12" + bigEndian(9000, 4) + std::string(9000, 'x');
    document.bytes().assign(binaryFile({listOf(512), longText}, 1, 2));
    EXPECT_EQ(document.parse()->kind, Kind::TooComplex);
    using PropertyListDocument::SharedBytes::Once;
    EXPECT_FALSE(document.parse(Once));
    document.bytes().assign(binaryFile({listOf(512), "\xD1\x02\x03", longText, "\x09"}, 1, 2));
    EXPECT_EQ(document.parse(Once)->kind, Kind::TooComplex);

    // Readers make a record of every element, which takes one byte of the file.
    for (const char* element : {"\xD0", "\xA0", "\x09", "\x50"}) {
        EXPECT_EQ(kindOfError(binaryFile({listOf(100'000), element}, 1, 4)), Kind::TooComplex);
        EXPECT_EQ(kindOfError(binaryFile({listOf(10'000), element}, 1, 4)), std::nullopt);
    }

    // Elements that are not shared meet no limit.
    std::vector<std::string> separate{"\xAF\x12" + bigEndian(100'000, 4)};
    while (separate.size() <= 100'000) {
        separate[0] += bigEndian(separate.size(), 3);
        separate.emplace_back("\xD0");
    }
    EXPECT_EQ(kindOfError(binaryFile(separate, 3, 3)), std::nullopt);
}

TEST(PropertyListBinary, TextsThatOverlapAreRefused) {
    // Each text begins five bytes after the one before, and all end at the same byte.
    std::string texts;
    std::string table;
    constexpr std::size_t kTexts = 2000;
    for (std::size_t i = 0; i < kTexts; ++i) {
        table += bigEndian(8 + texts.size(), 2);
        texts += "\x5F\x11" + bigEndian(5 * (kTexts - i) - 4, 2) + " ";
    }
    EXPECT_EQ(kindOfError("bplist00" + texts + table + trailer(kTexts, 8 + texts.size(), 1, 2)),
              Kind::TooComplex);
}

TEST(PropertyListBinary, NestingHasALimitAlsoThroughSharedObjects) {
    std::vector<std::string> chain;
    while (chain.size() < 511) {
        chain.push_back("\xA1" + bigEndian(chain.size() + 1, 2));
    }
    chain.emplace_back("\xA0");
    EXPECT_EQ(kindOfError(binaryFile(chain, 2, 2)), std::nullopt);
    chain.back() = "\xA1" + bigEndian(chain.size(), 2);
    chain.emplace_back("\xA0");
    EXPECT_EQ(kindOfError(binaryFile(chain, 2, 2)), Kind::TooDeep);

    // The middle of the chain has already been checked when the longer path reaches it.
    chain[0] = "\xA2" + bigEndian(300, 2) + bigEndian(1, 2);
    EXPECT_EQ(kindOfError(binaryFile(chain, 2, 2)), Kind::TooDeep);
}

}  // namespace
}  // namespace quillet::test
