// Our reader against libplist on the same files of both formats.

#include <gtest/gtest.h>
#include <memory>
#include <plist/plist.h>
#include <random>
#include <string>

#include "platform/plist/PropertyList.h"
#include "tests/platform/plist/PropertyListTestSupport.h"

namespace quillet::test {
namespace {

// Random values in XML, of those that the other library keeps whole: its reals have few digits.
class RandomXml {
public:
    explicit RandomXml(unsigned seed) : random_(seed) {}

    std::string value(int depth) {
        switch (below(depth > 0 ? 8 : 6)) {
            case 0:
                return "<string>" + text() + "</string>";
            case 1: {
                const std::uint64_t number =
                    ((std::uint64_t{random_()} << 31U) ^ random_()) >> below(64);
                return "<integer>" + std::string(below(2), '-') + std::to_string(number) +
                       "</integer>";
            }
            case 2:
                return "<real>" + std::to_string(below(2'000'000) / 8.0 - 125'000) + "</real>";
            case 3:
                return below(2) == 0 ? "<true/>" : "<false/>";
            case 4:
                return "<date>" + std::to_string(1985 + below(60)) + "-1" + digit(3) + "-2" +
                       digit(10) + "T1" + digit(10) + ":3" + digit(10) + ":5" + digit(10) +
                       "Z</date>";
            case 5:
                return "<data>" + data() + "</data>";
            case 6:
                return "<array>" + elements(depth, false) + "</array>";
            default:
                return "<dict>" + elements(depth, true) + "</dict>";
        }
    }

private:
    unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }
    std::string digit(unsigned limit) { return std::to_string(below(limit)); }

    std::string text() {
        static const char* const kPieces[] = {
            "a", "Hello ", "&amp;", "&lt;b>", "\"", "\n", "ä", "東", "😀"};
        std::string text;
        for (unsigned pieces = below(24); pieces > 0; --pieces) {
            text += kPieces[below(std::size(kPieces))];
        }
        return text;
    }

    std::string data() {
        std::string encoded;
        for (unsigned left = 4 * below(60); left > 0; --left) {
            encoded += "ABCDEFGHabcdefgh01234567+/"[below(26)];
        }
        return encoded + (below(2) == 0 ? "aGU=" : "aA==");
    }

    std::string elements(int depth, bool withKeys) {
        std::string xml;
        for (unsigned left = below(20); left > 0; --left) {
            xml += withKeys
                       ? "<key>k" + std::to_string(left) + (below(4) == 0 ? text() : "") + "</key>"
                       : "";
            xml += value(depth - 1);
        }
        return xml;
    }

    std::mt19937 random_;
};

struct PlistDeleter {
    void operator()(void* node) const { plist_free(node); }
};

std::string written(plist_t tree, void (*write)(plist_t, char**, std::uint32_t*)) {
    char* bytes = nullptr;
    std::uint32_t size = 0;
    write(tree, &bytes, &size);
    const std::unique_ptr<char, void (*)(char*)> owner(bytes, plist_to_xml_free);
    return {bytes, size};
}

TEST(PropertyListDifferential, ReadsWhatTheOtherLibraryReadsAndWrites) {
    constexpr unsigned kTrees = 150;
    for (unsigned seed = 1; seed <= kTrees; ++seed) {
        SCOPED_TRACE(seed);
        const std::string file = "<plist>" + RandomXml(seed).value(4) + "</plist>";
        ASSERT_EQ(kindOfError(file), std::nullopt);
        plist_t read = nullptr;
        plist_from_xml(file.data(), static_cast<std::uint32_t>(file.size()), &read);
        const std::unique_ptr<void, PlistDeleter> tree(read);
        for (auto* const write : {plist_to_xml, plist_to_bin}) {
            ASSERT_EQ(parsed(written(tree.get(), write)), parsed(file));
        }
    }
}

}  // namespace
}  // namespace quillet::test
