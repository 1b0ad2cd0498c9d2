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

// Makes lists of dictionaries of a few kinds that repeat. What the reader remembers of earlier
// dictionaries must not hide their small differences.
class RandomLists {
public:
    // The elements of a list, in XML.
    std::vector<std::string> make() {
        for (Kind& kind : kinds_) {
            kind.clear();
            for (std::size_t entries = below(4); entries > 0; --entries) {
                kind.emplace_back(below(std::size(kNames)), below(std::size(kValues)));
            }
        }
        std::vector<std::string> elements(1 + below(30));
        for (std::string& element : elements) {
            const Kind& kind = kinds_[below(4) == 0 ? below(kinds_.size()) : 0];
            element =
                rarely("<!-- -->") + (below(30) == 0 ? "<string>a</string>" : dictionary(kind));
        }
        return elements;
    }

private:
    using Kind = std::vector<std::pair<std::size_t, std::size_t>>;  // indexes of name and value

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
            // 400 blanks: a gap too long to be remembered.
            xml += "</key>" + rarely(std::string(400, ' ')) +
                   kValues[below(8) == 0 ? below(std::size(kValues)) : usual];
        }
        return xml + "</dict>";
    }

    std::mt19937 random_{20251114};  // NOLINT(bugprone-random-generator-seed): repeatable
    std::array<Kind, 3> kinds_;
};

TEST(PropertyListKeys, DictionariesLikeTheOnesBeforeReadAsTheyReadAloneAndGiveTheirOwnValues) {
    RandomLists lists;
    PropertyListKeys keys(kKeys);
    PropertyListDocument kept;
    for (int i = 0; i < 3000 && !testing::Test::HasFailure(); ++i) {
        std::string file = "<array>";
        std::string expected;
        for (const std::string& element : lists.make()) {
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
