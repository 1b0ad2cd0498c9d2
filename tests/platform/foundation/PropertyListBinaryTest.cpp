#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "platform/foundation/PropertyList.h"
#include "tests/platform/foundation/PropertyListTestSupport.h"

namespace quillet::test {

namespace {

using platform::PropertyListDocument;
using Kind = platform::PropertyListErrorKind;
using namespace std::string_literals;

TEST(PropertyListBinary, ValuesReadAsWritten) {
    struct Case {
        const char* name;
        std::string object;
        std::string dumped;
    };
    const Case cases[] = {
        {"null", "\x00"s, "(null)"},
        {"false", "\x08"s, "false"},
        {"true", "\x09"s, "true"},
        {"one byte is unsigned", "\x10\xFF"s, "255"},
        {"two bytes", "\x11\x01\x00"s, "256"},
        {"four bytes are unsigned", "\x12\xFF\xFF\xFF\xFF"s, "4294967295"},
        {"eight bytes are signed", "\x13" + bigEndian(~std::uint64_t{0}, 8), "-1"},
        {"unsigned in sixteen",
         "\x14" + bigEndian(0, 8) + bigEndian(~std::uint64_t{0}, 8),
         "18446744073709551615"},
        {"signed in sixteen", "\x14" + std::string(15, '\xFF') + "\xFE", "-2"},
        {"float", "\x22\x3F\xC0\x00\x00"s, "1.5r"},
        {"double", "\x23\xC0\x04\x00\x00\x00\x00\x00\x00"s, "-2.5r"},
        {"date", "\x33\x40\x24\x00\x00\x00\x00\x00\x00"s, "10d"},
        {"data", "\x42\x00\xFF"s, "<00ff>"},
        {"ASCII",
         "\x53"
         "abc"s,
         "\"abc\""},
        {"empty text", "\x50"s, "\"\""},
        {"long text", "\x5F\x10\x14" + std::string(20, 'x'), "\"" + std::string(20, 'x') + "\""},
        {"size of eight bytes", "\x5F\x13" + bigEndian(3, 8) + "abc", "\"abc\""},
        {"UTF-8", "\x72\xC3\xA4"s, "\"\xC3\xA4\""},
        {"UTF-16", "\x62\xD8\x3D\xDE\x00"s, "\"\xF0\x9F\x98\x80\""},
        {"lone surrogates",
         "\x63\xDE\x00\x00\x41\xD8\x3D"s,
         "\"\xEF\xBF\xBD"
         "A\xEF\xBF\xBD\""},
        {"UID", "\x81\x01\x02"s, "uid258"},
        {"empty array", "\xA0"s, "[]"},
        {"empty dictionary", "\xD0"s, "{}"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(parsed(binaryFile({c.object})), c.dumped);
    }
}

TEST(PropertyListBinary, ReferencesAndOffsetsMayHaveEveryWidth) {
    for (std::size_t referenceWidth = 1; referenceWidth <= 8; ++referenceWidth) {
        for (std::size_t offsetWidth = 1; offsetWidth <= 8; ++offsetWidth) {
            SCOPED_TRACE(referenceWidth * 10 + offsetWidth);
            const auto reference = [&](std::uint64_t object) {
                return bigEndian(object, referenceWidth);
            };
            const std::string dictionary =
                "\xD2" + reference(2) + reference(3) + reference(4) + reference(5);
            const std::vector<std::string> objects{
                "\xA3" + reference(1) + reference(4) + reference(5),
                dictionary,
                "\x51"
                "a",
                "\x51"
                "b",
                "\xB1" + reference(2),
                "\xC2" + reference(2) + reference(3)};
            EXPECT_EQ(parsed(binaryFile(objects, referenceWidth, offsetWidth)),
                      R"([{"a":["a"],"b":["a","b"]},["a"],["a","b"]])");

            std::string wrong = binaryFile({"\xA1" + reference(1)}, referenceWidth, offsetWidth);
            EXPECT_EQ(parsed(wrong), "a reference to no object at byte 8");
            wrong = binaryFile({"\xA1" + std::string(referenceWidth, '\xFF')}, referenceWidth);
            EXPECT_EQ(parsed(wrong), "a reference to no object at byte 8");
        }
    }
}

TEST(PropertyListBinary, BrokenFilesAreErrorsWithTheirPlace) {
    struct Case {
        const char* name;
        std::string file;
        Kind kind;
        std::size_t offset;
    };
    const auto patched = [](std::size_t fromEnd, std::uint64_t number, std::size_t width) {
        std::string file = binaryFile({"\x09"});
        return file.replace(file.size() - fromEnd, width, bigEndian(number, width));
    };
    const Case cases[] = {
        {"only a start", "bplist00", Kind::Malformed, 8},
        {"offsets without width", patched(26, 0, 1), Kind::Malformed, 16},
        {"offsets too wide", patched(26, 9, 1), Kind::Malformed, 16},
        {"references without width", patched(25, 0, 1), Kind::Malformed, 17},
        {"no objects", patched(24, 0, 8), Kind::Malformed, 26},
        {"too many objects", patched(24, 2, 8), Kind::Malformed, 18},
        {"countless objects", patched(24, ~std::uint64_t{0}, 8), Kind::Malformed, 18},
        {"root is no object", patched(16, 1, 8), Kind::Malformed, 26},
        {"table in the header", patched(8, 3, 8), Kind::Malformed, 34},
        {"table behind the end", patched(8, ~std::uint64_t{0}, 8), Kind::Malformed, 34},
        {"offset in the table", patched(33, 9, 1), Kind::Malformed, 9},
        {"offset in the header", patched(33, 7, 1), Kind::Malformed, 9},
        {"fill byte", binaryFile({"\x0F"}), Kind::Malformed, 8},
        {"unknown kind", binaryFile({"\x90"}), Kind::Malformed, 8},
        {"cut integer", binaryFile({"\x13 1234"}), Kind::Malformed, 8},
        {"integer of 32 bytes", binaryFile({"\x15" + std::string(32, '\0')}), Kind::Malformed, 8},
        {"integer too large",
         binaryFile({"\x14" + bigEndian(1, 8) + bigEndian(0, 8)}),
         Kind::Malformed,
         8},
        {"real of 2 bytes", binaryFile({"\x21 12"}), Kind::Malformed, 8},
        {"cut text",
         binaryFile({"\x55"
                     "abcd"}),
         Kind::Malformed,
         8},
        {"endless text",
         binaryFile({"\x5F\x13" + std::string(8, '\xFF') + "abc"}),
         Kind::Malformed,
         8},
        {"size that is no integer",
         binaryFile({"\x5F\x51"
                     "abc"}),
         Kind::Malformed,
         8},
        {"invalid text",
         binaryFile({"\xA1\x01",
                     "\x52"
                     "a\xC3"}),
         Kind::InvalidText,
         10},
        {"UID of 9 bytes",
         binaryFile({"\x88"
                     "123456789"}),
         Kind::Malformed,
         8},
        {"cut array", binaryFile({"\xA3\x00\x00"s}), Kind::Malformed, 8},
        {"key that is no text", binaryFile({"\xD1\x01\x01", "\x09"}), Kind::Malformed, 8},
        {"key that is no object", binaryFile({"\xD1\x07\x00"s}), Kind::Malformed, 8},
        {"array in itself", binaryFile({"\xA1\x00"s}), Kind::Cyclic, 8},
        {"dictionary in its array",
         binaryFile({"\xD1\x02\x01", "\xA1\x00"s, "\x51k"}),
         Kind::Cyclic,
         8},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        expectError(c.file, c.kind, c.offset);
    }
}

TEST(PropertyListBinary, BrokenObjectThatNothingLeadsToIsIgnored) {
    EXPECT_EQ(parsed(binaryFile({"\x09", "\x90"})), "true");
}

// Levels of two-element arrays that hold their child twice: 2^levels values in a few bytes.
TEST(PropertyListBinary, SharedReferencesThatUnfoldTooFarAreRefused) {
    std::vector<std::string> objects;
    for (char level = 1; level <= 24; ++level) {
        objects.push_back("\xA2"s + level + level);
    }
    objects.emplace_back("\x50");
    PropertyListDocument document;
    const auto error = document.parse(binaryFile(objects));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind, Kind::TooComplex);

    objects = {"\xAF\x11\x02\x00"s + std::string(0x200, '\x01'),
               "\x5F\x12" + bigEndian(9000, 4) + std::string(9000, 'x')};
    ASSERT_TRUE(document.parse(binaryFile(objects, 1, 2)));

    // A record is made of every element, which is one byte of the file.
    const auto shared = [](std::size_t count, const char* element) {
        return binaryFile(
            {"\xAF\x12" + bigEndian(count, 4) + std::string(count, '\x01'), element}, 1, 4);
    };
    for (const char* element : {"\xD0", "\xA0", "\x09", "\x50"}) {
        const auto tooMany = document.parse(shared(4'000'000, element));
        ASSERT_TRUE(tooMany);
        EXPECT_EQ(tooMany->kind, Kind::TooComplex);
        EXPECT_FALSE(document.parse(shared(10'000, element)));
    }
}

TEST(PropertyListBinary, ElementsThatAreNotSharedMeetNoLimit) {
    constexpr std::size_t kElements = 100'000;
    std::vector<std::string> objects{"\xAF\x12" + bigEndian(kElements, 4)};
    for (std::size_t element = 1; element <= kElements; ++element) {
        objects[0] += bigEndian(element, 3);
        objects.emplace_back("\xD0");
    }
    EXPECT_FALSE(PropertyListDocument().parse(binaryFile(objects, 3, 3)));
}

TEST(PropertyListBinary, TextsThatOverlapAreRefused) {
    // Each text begins five bytes behind the one before and lasts until the same end.
    std::string texts;
    std::string table;
    constexpr std::size_t kTexts = 2000;
    for (std::size_t i = 0; i < kTexts; ++i) {
        table += bigEndian(8 + texts.size(), 2);
        texts += "\x5F\x11" + bigEndian(5 * (kTexts - i) - 4, 2) + " ";
    }
    const std::string file = "bplist00" + texts + table + bigEndian(0, 6) + "\x02\x01" +
                             bigEndian(kTexts, 8) + bigEndian(0, 8) +
                             bigEndian(8 + texts.size(), 8);
    PropertyListDocument document;
    const auto error = document.parse(file);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind, Kind::TooComplex) << error->description();
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
    PropertyListDocument document;
    EXPECT_FALSE(document.parse(binaryFile(chain(512), 2, 2)));
    auto error = document.parse(binaryFile(chain(513), 2, 2));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind, Kind::TooDeep);

    // The middle of the chain is known already when the deeper way comes to it.
    std::vector<std::string> shared = chain(513);
    shared[0] = "\xA2" + bigEndian(300, 2) + bigEndian(1, 2);
    error = document.parse(binaryFile(shared, 2, 2));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind, Kind::TooDeep);
}

}  // namespace

}  // namespace quillet::test
