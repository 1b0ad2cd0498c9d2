#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "platform/plist/PropertyList.h"
#include "tests/platform/plist/PropertyListTestSupport.h"

namespace quillet::test {
namespace {

using Kind = platform::PropertyListErrorKind;
using namespace std::string_literals;

std::string number(std::uint64_t value) {
    return bigEndian(value, 8);
}

// Forms that the library of the differential test does not write.
TEST(PropertyListBinary, ValuesReadAsWritten) {
    const std::pair<std::string, const char*> cases[] = {
        {"\x00"s, "(null)"},
        {"\x11\xFF\x00"s, "65280"},
        {"\x12\xFF\xFF\xFF\xFF"s, "4294967295"},
        {"\x14" + number(0) + number(~0ULL), "18446744073709551615"},
        {"\x14" + std::string(15, '\xFF') + "\xFE", "-2"},
        {"\x22\x3F\xC0\x00\x00"s, "1.5r"},
        {"\x5F\x13" + number(3) + "abc", "\"abc\""},
        {"\x72\xC3\xA4"s, "\"\xC3\xA4\""},
        {"\x62\xDE\x00\xD8\x3D"s, "\"\xEF\xBF\xBD\xEF\xBF\xBD\""},  // lone surrogates
        {"\x81\x01\x02"s, "uid258"},
    };
    for (const auto& [object, dumped] : cases) {
        EXPECT_EQ(parsed(binaryFile({object})), dumped);
    }
    EXPECT_EQ(parsed(binaryFile({"\x09", "\x90"})), "true") << "a broken object without references";
}

TEST(PropertyListBinary, ReferencesAndOffsetsMayHaveEveryWidth) {
    for (std::size_t widths = 0; widths < 64; ++widths) {
        const std::size_t referenceWidth = widths / 8 + 1;
        const std::size_t offsetWidth = widths % 8 + 1;
        SCOPED_TRACE(widths);
        // An object of the references to these objects.
        const auto object = [&](const char* marker, std::initializer_list<std::uint64_t> objects) {
            std::string bytes = marker;
            for (const std::uint64_t reference : objects) {
                bytes += bigEndian(reference, referenceWidth);
            }
            return bytes;
        };
        const std::vector<std::string> objects{object("\xA3", {1, 4, 5}),
                                               object("\xD2", {2, 3, 4, 5}),
                                               ascii("a"),
                                               ascii("b"),
                                               object("\xB1", {2}),
                                               object("\xC2", {2, 3})};
        EXPECT_EQ(parsed(binaryFile(objects, referenceWidth, offsetWidth)),
                  R"([{"a":["a"],"b":["a","b"]},["a"],["a","b"]])");
        for (const std::uint64_t wrong : {std::uint64_t{1}, ~std::uint64_t{0}}) {
            EXPECT_EQ(parsed(binaryFile({object("\xA1", {wrong})}, referenceWidth, offsetWidth)),
                      "a reference to no object at byte 8");
        }
    }
}

TEST(PropertyListBinary, BrokenFilesAreErrorsWithTheirPlace) {
    struct Case {
        const char* name;
        std::size_t offset;
        std::string file;
        Kind kind = Kind::Malformed;
    };
    const auto patched = [](std::size_t fromEnd, std::uint64_t value, std::size_t width) {
        std::string file = binaryFile({"\x09"});
        return file.replace(file.size() - fromEnd, width, bigEndian(value, width));
    };
    const Case cases[] = {
        {"only a start", 8, "bplist00"},
        {"offsets without width", 16, patched(26, 0, 1)},
        {"offsets too wide", 16, patched(26, 9, 1)},
        {"references without width", 17, patched(25, 0, 1)},
        {"no objects", 26, patched(24, 0, 8)},
        {"too many objects", 18, patched(24, 2, 8)},
        {"countless objects", 18, patched(24, ~0ULL, 8)},
        {"root is no object", 26, patched(16, 1, 8)},
        {"table in the header", 34, patched(8, 3, 8)},
        {"table behind the end", 34, patched(8, ~0ULL, 8)},
        {"offset in the table", 9, patched(33, 9, 1)},
        {"offset in the header", 9, patched(33, 7, 1)},
        {"fill byte", 8, binaryFile({"\x0F"})},
        {"unknown kind", 8, binaryFile({"\x90"})},
        {"cut integer", 8, binaryFile({"\x13 1234"})},
        {"integer of 32 bytes", 8, binaryFile({"\x15" + std::string(32, '\0')})},
        {"integer too large", 8, binaryFile({"\x14" + number(1) + number(0)})},
        {"real of 2 bytes", 8, binaryFile({"\x21 12"})},
        {"cut text", 8, binaryFile({"\x55 abc"})},
        {"endless text", 8, binaryFile({"\x5F\x13" + number(~0ULL) + "abc"})},
        {"size that is no integer", 8, binaryFile({"\x5F" + ascii("a") + "bc"})},
        {"invalid text", 10, binaryFile({"\xA1\x01", ascii(" \xC3")}), Kind::InvalidText},
        {"UID of 9 bytes", 8, binaryFile({"\x88 12345678"})},
        {"cut array", 8, binaryFile({"\xA3\x00\x00"s})},
        {"key that is no text", 8, binaryFile({"\xD1\x01\x01", "\x09"})},
        {"key that is no object", 8, binaryFile({"\xD1\x07\x00"s})},
        {"cycle", 8, binaryFile({"\xA1\x00"s}), Kind::Cyclic},
        {"longer cycle", 8, binaryFile({"\xD1\x02\x01", "\xA1\x00"s, ascii("k")}), Kind::Cyclic},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        expectError(c.file, c.kind, c.offset);
    }
}

// Levels of arrays that contain their child twice: 2^levels values in a few bytes.
TEST(PropertyListBinary, SharedReferencesThatUnfoldTooFarAreRefused) {
    std::vector<std::string> objects;
    for (char level = 1; level <= 24; ++level) {
        objects.push_back("\xA2"s + level + level);
    }
    objects.emplace_back("\x50");
    EXPECT_EQ(kindOfError(binaryFile(objects)), Kind::TooComplex);

    // A long text counts at each place when it is a key, or when the reader copies it.
    platform::PropertyListDocument document;
    const std::string longText = "\x5F\x12" + bigEndian(9000, 4) + std::string(9000, 'x');
    const std::string list = "\xAF\x11\x02\x00"s + std::string(0x200, '\x01');
    document.bytes().assign(binaryFile({list, longText}, 1, 2));
    EXPECT_EQ(document.parse()->kind, Kind::TooComplex);
    EXPECT_FALSE(document.parse(platform::PropertyListDocument::SharedBytes::Once));
    document.bytes().assign(binaryFile({list, "\xD1\x02\x03", longText, "\x09"}, 1, 2));
    EXPECT_EQ(document.parse(platform::PropertyListDocument::SharedBytes::Once)->kind,
              Kind::TooComplex);

    // Readers make a record of every element, which takes one byte of the file.
    const auto shared = [](std::size_t count, const char* element) {
        return binaryFile(
            {"\xAF\x12" + bigEndian(count, 4) + std::string(count, '\x01'), element}, 1, 4);
    };
    for (const char* element : {"\xD0", "\xA0", "\x09", "\x50"}) {
        EXPECT_EQ(kindOfError(shared(4'000'000, element)), Kind::TooComplex);
        EXPECT_EQ(kindOfError(shared(10'000, element)), std::nullopt);
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
    const auto chain = [](std::size_t depth) {
        std::vector<std::string> objects;
        for (std::size_t i = 1; i < depth; ++i) {
            objects.push_back("\xA1" + bigEndian(i, 2));
        }
        objects.emplace_back("\xA0");
        return objects;
    };
    EXPECT_EQ(kindOfError(binaryFile(chain(512), 2, 2)), std::nullopt);
    EXPECT_EQ(kindOfError(binaryFile(chain(513), 2, 2)), Kind::TooDeep);

    // The middle of the chain has already been checked when the longer path reaches it.
    std::vector<std::string> shared = chain(513);
    shared[0] = "\xA2" + bigEndian(300, 2) + bigEndian(1, 2);
    EXPECT_EQ(kindOfError(binaryFile(shared, 2, 2)), Kind::TooDeep);
}

}  // namespace
}  // namespace quillet::test
