#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "platform/foundation/Exception.h"
#include "platform/foundation/PropertyList.h"
#include "tests/platform/foundation/PropertyListTestSupport.h"

namespace quillet::test {

namespace {

using platform::PropertyListDocument;
using platform::PropertyListKeys;
using platform::PropertyListValue;

constexpr std::array<std::string_view, 3> kKeys{"a", "b&c", "d"};

// Every element's values for the keys, one line an element; "-" where there is none.
std::string valuesOfKeys(PropertyListKeys& keys, const PropertyListValue& list) {
    std::array<PropertyListValue, kKeys.size()> found;
    std::string text;
    for (const PropertyListValue element : list) {
        try {
            keys.find(element, found);
            for (std::size_t i = 0; i < found.size(); ++i) {
                text += found[i] ? dump(found[i]) : "-";
                EXPECT_EQ(dump(found[i]), dump(element.valueForKey(kKeys[i])));
            }
        } catch (const platform::Exception&) {
            text += "raised";
            EXPECT_FALSE(found[0]);
        }
        text += '\n';
    }
    return text;
}

// Each line differs from the one before in one respect that a remembered layout must not miss.
TEST(PropertyListKeys, FindsWhatALookUpFindsInDictionariesOfAnyOrder) {
    const std::string files[] = {
        "<array>"
        "<dict><key>a</key><integer>1</integer><key>d</key><string>x</string></dict>"
        "<dict><key>a</key><integer>2</integer><key>d</key><string>y&amp;</string></dict>"
        "<dict><key>a</key><integer>-2</integer><key>d</key><string/></dict>"
        "<dict><key>d</key><integer>3</integer><key>a</key><string>z</string></dict>"
        "<dict><key>a</key><integer>4</integer><key>e</key><string>x</string></dict>"
        "<dict><key>a</key><integer>5</integer></dict>"
        "<dict><key>a</key><array><true/></array><key>d</key><string>x</string></dict>"
        "<dict><key>a</key><array><true/></array><key>d</key><string>v</string></dict>"
        "<dict><key>b&amp;c</key><integer>6</integer><key>b&#38;c</key><string>x</string></dict>"
        "<dict><key>b&amp;c</key><integer>7</integer><key>b&#38;c</key><string>w</string></dict>"
        "<string>no dictionary</string>"
        "<dict><key>a</key><dict><key>d</key><true/></dict></dict>"
        "<dict/></array>",
        // The same places in another file, but other keys.
        "<array>"
        "<dict><key>d</key><integer>1</integer><key>a</key><string>x</string></dict></array>",
    };
    const std::string expected[] = {
        "1-\"x\"\n2-\"y&\"\n-2-\"\"\n\"z\"-3\n4--\n5--\n[true]-\"x\"\n[true]-\"v\"\n-\"x\"-\n"
        "-\"w\"-\nraised\n{\"d\":true}--\n---\n",
        "\"x\"-1\n"};
    PropertyListKeys keys(kKeys);
    for (std::size_t i = 0; i < std::size(files); ++i) {
        // A new document often takes the place of the old one in memory.
        PropertyListDocument document;
        ASSERT_FALSE(document.parse(files[i]));
        EXPECT_EQ(valuesOfKeys(keys, document.root()), expected[i]);
    }
}

// A dictionary with another first key, in the middle of a list of equal ones.
TEST(PropertyListKeys, OtherKeysAreNotTakenForThoseOfTheDictionariesBefore) {
    const auto dictionary = [](const char* key) {
        return "<dict><key>" + std::string(key) + "</key><true/><key>d</key><false/></dict>";
    };
    const std::string space(400, ' ');
    struct Case {
        std::vector<std::string> keys;
        const char* values;
    };
    const Case cases[] = {
        {{"a", "a", "a", "e", "a"}, "true-false\ntrue-false\ntrue-false\n--false\ntrue-false\n"},
        {{"e", "e", "e", "a", "e"}, "--false\n--false\n--false\ntrue-false\n--false\n"},
        // The gap before this first key is too long to be remembered.
        {{"e", "e", "<!--" + space + "-->a", "e"}, "--false\n--false\ntrue-false\n--false\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.values);
        std::string list = "<array>";
        for (const std::string& key : c.keys) {
            list += dictionary(key.c_str());
        }
        PropertyListKeys keys(kKeys);
        PropertyListDocument document;
        ASSERT_FALSE(document.parse(list + "</array>"));
        EXPECT_EQ(valuesOfKeys(keys, document.root()), c.values);
    }
}

TEST(PropertyListKeys, FindsTheSameInRandomDictionaries) {
    constexpr int kLists = 1500;
    constexpr int kDictionaries = 30;
    static const char* const kNames[] = {"a", "b&amp;c", "d", "e", "f"};
    static const char* const kValues[] = {"<string>x</string>",
                                          "<integer>1</integer>",
                                          "<true/>",
                                          "<dict><key>a</key><true/></dict>"};
    std::mt19937 random(20251114);  // NOLINT(bugprone-random-generator-seed): repeatable
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    PropertyListKeys keys(kKeys);
    PropertyListDocument document;
    for (int list = 0; list < kLists; ++list) {
        std::array<std::string, 3> kinds;  // the entries of dictionaries that come again and again
        for (std::string& kind : kinds) {
            for (std::size_t entries = below(4); entries > 0; --entries) {
                kind += "<key>" + std::string(kNames[below(std::size(kNames))]) + "</key>" +
                        kValues[below(std::size(kValues))];
                kind += below(20) == 0 ? std::string(300, ' ') : "";
            }
        }
        std::string file = "<array>";
        for (int i = 0; i < kDictionaries; ++i) {
            const std::string& kind = kinds[below(4) == 0 ? below(kinds.size()) : 0];
            file += (below(20) == 0 ? "<!-- -->" : "") + ("<dict>" + kind) + "</dict>";
        }
        SCOPED_TRACE(file);
        ASSERT_FALSE(document.parse(file + "</array>"));
        valuesOfKeys(keys, document.root());
        ASSERT_FALSE(testing::Test::HasFailure());
    }
}

TEST(PropertyListKeys, FindsTheSameInBinaryFiles) {
    const std::string file = binaryFile({"\xA5\x01\x02\x03\x04\x05",
                                         "\xD2\x06\x07\x08\x09",
                                         "\xD2\x06\x07\x09\x08",
                                         "\xD2\x07\x06\x08\x09",
                                         "\xD2\x06\x06\x08\x09",
                                         "\xD1\x07\x0A",
                                         "\x51"
                                         "a",
                                         "\x51"
                                         "d",
                                         "\x10\x01",
                                         "\x10\x02",
                                         std::string(1, '\0')});
    PropertyListKeys keys(kKeys);
    PropertyListDocument document;
    ASSERT_FALSE(document.parse(file));
    EXPECT_EQ(valuesOfKeys(keys, document.root()), "1-2\n2-1\n2-1\n2--\n---\n");
}

TEST(PropertyListXml, EntriesThatRepeatTheGapsOfOthersReadAsWritten) {
    struct Case {
        const char* list;
        const char* dumped;
    };
    const std::string comment(400, ' ');
    const std::string longGaps = "<dict><key>a</key>" + comment +
                                 "<true/></dict><dict><key>b</key>" + comment +
                                 "<true/></dict><dict><key>a</key>" + comment + "<false/></dict>";
    const Case cases[] = {
        {"<dict><key>a</key><integer>1</integer></dict><dict><key>a</key><integer> "
         "2</integer></dict>"
         "<dict><key>a</key><integer>-3</integer></dict><dict><key>a</key><integer>1<!-- -->2"
         "</integer></dict><dict><key>a</key><integer>18446744073709551615</integer></dict>",
         R"([{"a":1},{"a":2},{"a":-3},{"a":12},{"a":18446744073709551615}])"},
        {"<dict><key>a</key><string>x</string></dict><dict><key>a</key><string>&lt;</string "
         "></dict>"
         "<dict><key>a</key><string></string></dict>",
         R"([{"a":"x"},{"a":"<"},{"a":""}])"},
        {"<dict><key>a</key><true/></dict><dict><key>a</key><false/></dict>"
         "<dict><key>a</key><dict><key>a</key><true/></dict></dict>",
         R"([{"a":true},{"a":false},{"a":{"a":true}}])"},
        // Gaps that lead from one dictionary into the next, and ones that only look like it.
        {"<dict><key>a</key><true/></dict> <dict><key>a</key><true/></dict> "
         "<dict><key>a</key><true/>"
         "</dict> <dict><key>a</key><true/><key>b</key><true/></dict> "
         "<dict><key>a</key><true/></dict>"
         "<dict/><dict/> <dict><key>a</key><dict><key>a</key><true/></dict></dict>",
         R"([{"a":true},{"a":true},{"a":true},{"a":true,"b":true},{"a":true},{},{},{"a":{"a":true}}])"},
        {longGaps.c_str(), R"([{"a":true},{"b":true},{"a":false}])"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.list);
        PropertyListDocument document;
        ASSERT_FALSE(document.parse("<array>" + std::string(c.list) + "</array>"));
        EXPECT_EQ(dump(document.root()), c.dumped);
    }
    const std::string broken[] = {
        "<array><dict><key>a</key><integer>1</integer></dict><dict><key>a</key><integer>x</"
        "integer>",
        "<array><dict><key>a</key><string>1</string></dict><dict><key>a</key><string>x</integer>",
        "<array><dict><key>a</key><string>1</string></dict><dict><key>a</key><string>",
        // The seam of the array's dictionaries inside a dictionary.
        "<array><dict><key>a</key><true/></dict><dict><key>a</key><true/></dict><dict><key>a</key>"
        "<dict><key>a</key><true/></dict><dict><key>a</key><true/></dict></dict></array>"};
    for (const std::string& file : broken) {
        SCOPED_TRACE(file);
        EXPECT_TRUE(PropertyListDocument().parse(file));
    }
}

}  // namespace

}  // namespace quillet::test
