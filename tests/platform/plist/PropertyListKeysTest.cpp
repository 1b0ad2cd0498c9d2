#include <array>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/base/Exception.h"
#include "platform/plist/PropertyList.h"
#include "tests/platform/plist/PropertyListTestSupport.h"

namespace quillet::test {
namespace {

using platform::PropertyListDocument;
using platform::PropertyListKeys;
using platform::PropertyListValue;

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

constexpr const char* kNames[] = {"a", "b&amp;c", "b&#38;c", "d", "e"};
constexpr const char* kValues[] = {"<string>x</string>",
                                   "<string>&lt;</string >",
                                   "<string/>",
                                   "<integer>1</integer>",
                                   "<integer> -1<!-- -->2</integer>",
                                   "<true/>",
                                   "<dict><key>a</key><true/></dict>",
                                   "<array><true/></array>"};
using Kind = std::vector<std::pair<std::size_t, std::size_t>>;  // indexes of names and values

// In most cases a dictionary of this kind, in XML.
std::string randomElement(std::mt19937& random, const Kind& kind) {
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    if (below(30) == 0) {
        return "<string>a</string>";
    }
    std::string xml = below(10) == 0 ? "<!-- --><dict> " : "<dict>";
    for (const auto& [name, value] : kind) {
        xml += std::string("<key>") + kNames[below(15) == 0 ? below(5) : name] + "</key>" +
               std::string(below(20) == 0 ? 400 : 0, ' ') +  // a gap too long to be remembered
               kValues[below(8) == 0 ? below(8) : value];
    }
    return xml + "</dict>";
}

// Kinds of dictionaries repeat. What the reader remembers of earlier ones must hide no difference.
TEST(PropertyListKeys, DictionariesLikeTheOnesBeforeReadAsTheyReadAloneAndGiveTheirOwnValues) {
    std::mt19937 random(20251114);  // NOLINT(bugprone-random-generator-seed): repeatable
    PropertyListKeys keys(kKeys);
    PropertyListDocument kept;
    for (int i = 0; i < 3000 && !testing::Test::HasFailure(); ++i) {
        std::array<Kind, 3> kinds;
        for (Kind& kind : kinds) {
            for (auto entries = random() % 4; entries > 0; --entries) {
                kind.emplace_back(random() % 5, random() % 8);
            }
        }
        std::string file = "<array>";
        std::string expected;
        for (auto elements = 1 + random() % 30; elements > 0; --elements) {
            const std::string element =
                randomElement(random, kinds[random() % 4 == 0 ? random() % 3 : 0]);
            file += element;
            expected += (expected.empty() ? "[" : ",") + parsed(element);
        }
        SCOPED_TRACE(file);
        PropertyListDocument fresh;  // often at the address of an earlier one
        PropertyListDocument& document = i % 2 == 0 ? kept : fresh;
        const auto error = document.parse(file + "</array>");
        ASSERT_FALSE(error) << error->description();
        EXPECT_EQ(dump(document.root()), expected + "]");
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
