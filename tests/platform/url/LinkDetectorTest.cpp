#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Utf8.h"
#include "platform/url/LinkDetector.h"
#include "platform/url/URL.h"
#include "tests/support/DocumentTable.h"

namespace quillet::test {
namespace {

using namespace std::string_literals;
using platform::TextLink;
using testing::ElementsAre;
using testing::ElementsAreArray;

// The URLs found in a text, which are checked for what holds of all of them.
std::vector<std::string> urlsIn(std::string_view text) {
    std::vector<std::string> urls;
    std::size_t end = 0;
    for (const TextLink& link : platform::LinkDetector::linksIn(text)) {
        EXPECT_GE(link.offset, end);
        EXPECT_GT(link.length, 0U);
        end = link.offset + link.length;
        EXPECT_LE(end, text.size());
        const auto url = platform::URL::URLWithString(link.absoluteString);
        EXPECT_TRUE(url && !url->scheme().empty()) << link.absoluteString;
        urls.push_back(link.absoluteString);
    }
    return urls;
}

TEST(LinkDetector, LinksAreWhatTheDocumentTells) {
    const auto rows = documentTable("links.md", "Text");
    ASSERT_GT(rows.size(), 80U);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 2U);
        EXPECT_THAT(urlsIn(row[0]), ElementsAreArray(itemsOfCell(row[1]))) << row[0];
    }
}

TEST(LinkDetector, ALinkEndsBeforeEveryCharacterThatStopsIt) {
    // No UTF-8: bytes of nothing, a lone surrogate, a code that is too large.
    std::vector<std::string> stops{"\xFF", "\xC3", "\xED\xA0\x80", "\xF4\x90\x80\x80"};
    // Blanks of no break and no width, separator, override, replacement and private characters too.
    for (const char32_t stop : std::u32string_view(
             U" \n\t\x7F`|^\\\u00A0\u200B\u2028\u202E„‚’‹｝〉：！～．\uFFFD\uE000")) {
        char bytes[4];
        stops.emplace_back(bytes, platform::writeUtf8(stop, bytes));
    }
    for (const std::string& stop : stops) {
        for (const std::string link : {"http://example.com/a", "ftp://example.com"}) {
            EXPECT_THAT(urlsIn("(" + link + stop + "b"), ElementsAre(link)) << stop;
        }
    }
}

TEST(LinkDetector, TheRangeIsTheTextThatTheLinkStandsIn) {
    const std::string text = "é: <Müller@müller.example>, www.example.com/ä.";
    std::vector<std::string> found;
    for (const TextLink& link : platform::LinkDetector::linksIn(text)) {
        found.push_back(text.substr(link.offset, link.length));
    }
    EXPECT_THAT(found, ElementsAre("Müller@müller.example", "www.example.com/ä"));
}

TEST(LinkDetector, NamesThatAreTooLongMakeNoLink) {
    const std::string label(63, 'a');
    const std::string name = label + "." + label + "." + label + "." + label.substr(2);
    const struct {
        std::string text;
        std::size_t links;
    } cases[] = {
        {"http://" + name, 1},
        {"http://" + name + "b", 0},
        {"http://" + label + "b.example", 0},
        {"http://" + std::string(2000, 'a') + ".\xC3\xA4", 0},
        {label + "b@example.com", 1},
        {label + "bc@example.com", 0},
        {"mailto:" + label + "bc@example.com", 0},
        {"http://[" + std::string(100, ':') + "]", 0},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(urlsIn(row.text).size(), row.links) << row.text;
    }
}

// Each of these takes minutes where something is read again for every sign of a link.
TEST(LinkDetector, HostileTextIsReadOnce) {
    constexpr std::size_t kPieces = 500'000;
    const struct {
        const char* start;
        const char* piece;  // follows the start this many times
        std::size_t links;
    } cases[] = {
        {"", "@", 0},
        {"", "a@", 0},
        {"", "a.", 0},
        {"", ":", 0},
        {"", "http://", 0},
        {"", "http://a", 0},
        {"", "http://a@", 0},
        {"", "http://a:", kPieces},
        {"", "http://\xC3\xA4 ", kPieces},
        {"", "www.", 0},
        {"", "_www.", 0},
        {"", "\xC3\xA4www.", 0},
        {"", "mailto:a@", 0},
        {"", "a@b.cc ", kPieces},
        {"", "a://", 0},
        {"data:", "data:", 0},
        {"", "\xF0\x9F\x98\x80@", 0},
        {"http://b.example/", "(", 1},
        {"http://b.example/", ")", 1},
        {"http://b.example/", "([{.", 1},
        {"http://b.example/", "http://", 1},
        {"mailto:a@b.example", ",a@b.example", 1},
    };
    for (const auto& row : cases) {
        std::string text = row.start;
        for (std::size_t piece = 0; piece < kPieces; ++piece) {
            text += row.piece;
        }
        EXPECT_EQ(platform::LinkDetector::linksIn(text).size(), row.links)
            << row.start << row.piece;
    }
}

}  // namespace
}  // namespace quillet::test
