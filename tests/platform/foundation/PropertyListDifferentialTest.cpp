// Our reader against libplist on the same files of both formats.

#include <gtest/gtest.h>
#include <memory>
#include <plist/plist.h>
#include <random>
#include <string>

#include "platform/foundation/PropertyList.h"
#include "tests/platform/foundation/PropertyListTestSupport.h"

namespace quillet::test {

namespace {

using platform::PropertyListDocument;

// A random tree with what it must look like when read. Values whose two formats differ in
// libplist (reals print with fewer digits, dates lose fractions) keep to what both can hold.
class RandomTree {
public:
    explicit RandomTree(unsigned seed) : random_(seed) {}

    plist_t make(std::string& expected, int depth) {
        const unsigned kind = below(depth > 0 ? 8 : 6);
        switch (kind) {
            case 0:
                return string(expected);
            case 1: {
                const auto number = static_cast<std::int64_t>(wide() >> below(64));
                const std::int64_t value = below(2) == 0 ? number : -(number / 2);
                expected += std::to_string(value);
                return plist_new_uint(static_cast<std::uint64_t>(value));
            }
            case 2: {
                const double value = static_cast<double>(below(2000000)) / 8 - 125000;
                expected += platform::Number(value).text() + 'r';
                return plist_new_real(value);
            }
            case 3: {
                const bool value = below(2) == 0;
                expected += value ? "true" : "false";
                return plist_new_bool(value ? 1 : 0);
            }
            case 4: {
                const auto seconds = static_cast<std::int32_t>(below(2'000'000'000)) - 500'000'000;
                expected += std::to_string(seconds) + 'd';
                return plist_new_date(seconds, 0);
            }
            case 5:
                return data(expected);
            case 6:
                return array(expected, depth);
            default:
                return dictionary(expected, depth);
        }
    }

private:
    unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }
    std::uint64_t wide() { return (std::uint64_t{random_()} << 31U) ^ random_(); }

    std::string text() {
        static const char* const kPieces[] = {
            "a", "Hello ", "&", "<b>", "\"", "]]>", "\n", "ä", "\xE6\x9D\xB1", "\xF0\x9F\x98\x80"};
        std::string text;
        for (unsigned pieces = below(24); pieces > 0; --pieces) {
            text += kPieces[below(std::size(kPieces))];
        }
        return text;
    }

    plist_t string(std::string& expected) {
        const std::string value = text();
        expected += '"' + value + '"';
        return plist_new_string(value.c_str());
    }

    plist_t data(std::string& expected) {
        std::string bytes(below(200), '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(below(256));
        }
        expected += '<' + hexadecimal(bytes) + '>';
        return plist_new_data(bytes.data(), bytes.size());
    }

    plist_t array(std::string& expected, int depth) {
        plist_t array = plist_new_array();
        expected += '[';
        const unsigned count = below(20);
        for (unsigned i = 0; i < count; ++i) {
            expected += i > 0 ? "," : "";
            plist_array_append_item(array, make(expected, depth - 1));
        }
        expected += ']';
        return array;
    }

    plist_t dictionary(std::string& expected, int depth) {
        plist_t dictionary = plist_new_dict();
        expected += '{';
        const unsigned count = below(20);
        for (unsigned i = 0; i < count; ++i) {
            const std::string key = "k" + std::to_string(i) + (below(4) == 0 ? text() : "");
            expected += (i > 0 ? ",\"" : "\"") + key + "\":";
            plist_dict_set_item(dictionary, key.c_str(), make(expected, depth - 1));
        }
        expected += '}';
        return dictionary;
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

TEST(PropertyListDifferential, ReadsWhatTheOtherLibraryWrites) {
    constexpr unsigned kTrees = 150;
    PropertyListDocument document;
    for (unsigned seed = 1; seed <= kTrees; ++seed) {
        SCOPED_TRACE(seed);
        std::string expected;
        const std::unique_ptr<void, PlistDeleter> tree(RandomTree(seed).make(expected, 4));
        for (auto* const write : {plist_to_xml, plist_to_bin}) {
            const auto error = document.parse(written(tree.get(), write));
            ASSERT_FALSE(error) << error->description();
            ASSERT_EQ(dump(document.root()), expected);
        }
    }
}

}  // namespace

}  // namespace quillet::test
