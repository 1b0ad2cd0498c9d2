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
using platform::PropertyListType;
using platform::PropertyListValue;

constexpr std::array<std::string_view, 3> kKeys{"a", "b&c", "d"};

// Finds the keys in one element of the list after another, as a look-up of each finds them.
void expectKeysFound(PropertyListKeys& keys, const PropertyListValue& list) {
    std::array<PropertyListValue, kKeys.size()> found;
    for (const PropertyListValue element : list) {
        found.fill(element);  // what was there before must go
        if (element.type() != PropertyListType::Dictionary) {
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

// Lists of dictionaries of a few kinds that come again and again, with small differences that what
// is remembered of the ones before must not hide.
class RandomLists {
public:
    // The elements of a list, in XML.
    std::vector<std::string> make() {
        constexpr std::size_t kMostElements = 30;
        for (Kind& kind : kinds_) {
            kind.clear();
            for (std::size_t entries = below(4); entries > 0; --entries) {
                kind.emplace_back(below(std::size(kNames)), below(std::size(kValues)));
            }
        }
        std::vector<std::string> elements(1 + below(kMostElements));
        for (std::string& element : elements) {
            element =
                rarely("<!-- -->") +
                (below(30) == 0 ? "<string>a</string>"
                                : dictionary(kinds_[below(4) == 0 ? below(kinds_.size()) : 0]));
        }
        return elements;
    }

private:
    using Kind = std::vector<std::pair<std::size_t, std::size_t>>;  // numbers of name and value

    static constexpr const char* kNames[] = {"a", "b&amp;c", "b&#38;c", "d", "e"};
    static constexpr const char* kValues[] = {"<string>x</string>",
                                              "<string>&lt;</string >",
                                              "<string/>",
                                              "<integer>1</integer>",
                                              "<integer> -1<!-- -->2</integer>",
                                              "<true/>",
                                              "<dict><key>a</key><true/></dict>",
                                              "<array><true/></array>"};

    std::size_t below(std::size_t limit) { return random_() % limit; }
    std::string rarely(std::string text) { return below(20) == 0 ? std::move(text) : ""; }

    std::string dictionary(const Kind& kind) {
        std::string xml = below(10) == 0 ? "<dict> " : "<dict>";
        for (const auto& [name, usual] : kind) {
            xml += std::string("<key>") + kNames[below(15) == 0 ? below(std::size(kNames)) : name];
            // A gap longer than those that are remembered.
            xml += "</key>" + rarely(std::string(400, ' ')) +
                   kValues[below(8) == 0 ? below(std::size(kValues)) : usual];
        }
        return xml + "</dict>";
    }

    std::mt19937 random_{20251114};  // NOLINT(bugprone-random-generator-seed): repeatable
    std::array<Kind, 3> kinds_;
};

TEST(PropertyListKeys, DictionariesLikeTheOnesBeforeReadAsTheyReadAloneAndGiveTheirOwnValues) {
    constexpr int kLists = 3000;
    RandomLists lists;
    PropertyListKeys keys(kKeys);
    PropertyListDocument kept;
    for (int i = 0; i < kLists && !testing::Test::HasFailure(); ++i) {
        std::string file = "<array>";
        std::string expected;
        for (const std::string& element : lists.make()) {
            file += element;
            expected += (expected.empty() ? "[" : ",") + parsed(element);
        }
        SCOPED_TRACE(file);
        PropertyListDocument fresh;  // often takes the place of the one before in memory
        PropertyListDocument& document = i % 2 == 0 ? kept : fresh;
        const auto error = document.parse(file + "</array>");
        ASSERT_FALSE(error) << error->description();
        EXPECT_EQ(dump(document.root()), expected + "]");
        expectKeysFound(keys, document.root());
    }
}

TEST(PropertyListKeys, ABrokenEntryIsAnErrorAlsoBehindOnesLikeIt) {
    for (const char* broken :
         {"<integer>1</integer></dict><dict><key>a</key><integer>x</integer>",
          "<string>1</string></dict><dict><key>a</key><string>x</integer>",
          "<string>1</string></dict><dict><key>a</key><string>",
          // What leads from one dictionary to the next, inside a dictionary.
          "<true/></dict><dict><key>a</key><true/></dict><dict><key>a</key>"
          "<dict><key>a</key><true/></dict><dict><key>a</key><true/></dict>"}) {
        SCOPED_TRACE(broken);
        EXPECT_TRUE(PropertyListDocument().parse("<array><dict><key>a</key>" + std::string(broken) +
                                                 "</dict></array>"));
    }
}

TEST(PropertyListKeys, FindsTheSameInBinaryFiles) {
    PropertyListKeys keys(kKeys);
    PropertyListDocument document;
    ASSERT_FALSE(document.parse(binaryFile({"\xA5\x01\x02\x03\x04\x05",
                                            "\xD2\x06\x07\x08\x09",
                                            "\xD2\x06\x07\x09\x08",
                                            "\xD2\x07\x06\x08\x09",
                                            "\xD2\x06\x06\x08\x09",
                                            "\xD1\x07\x0A",
                                            ascii("a"),
                                            ascii("d"),
                                            "\x10\x01",
                                            "\x10\x02",
                                            std::string(1, '\0')})));
    expectKeysFound(keys, document.root());
}

}  // namespace

}  // namespace quillet::test
