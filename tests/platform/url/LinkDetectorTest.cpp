#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
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

// The URLs found in a text. Checks what must be true of every link.
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
    // Not UTF-8: stray bytes, a lone surrogate, a code that is too large.
    std::vector<std::string> stops{"\xFF", "\xC3", "\xED\xA0\x80", "\xF4\x90\x80\x80"};
    // Also blanks without break or width, a separator, an override, replacement and private
    // characters.
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
    const std::pair<std::string, std::size_t> cases[] = {
        {"http://" + name, 1},
        {"http://" + name + "b", 0},
        {"http://" + label + "b.example", 0},
        {"http://" + std::string(2000, 'a') + ".\xC3\xA4", 0},
        {label + "b@example.com", 1},
        {label + "bc@example.com", 0},
        {"http://[" + std::string(100, ':') + "]", 0},
    };
    for (const auto& [text, links] : cases) {
        EXPECT_EQ(urlsIn(text).size(), links) << text;
    }
}

// Each of these takes minutes if something is read again for every sign of a link.
TEST(LinkDetector, HostileTextIsReadOnce) {
    constexpr std::size_t kPieces = 500'000;
    // Each piece is repeated many times after the start.
    const auto expectLinks = [](std::size_t links, std::string_view start, const char* pieces) {
        std::istringstream all(pieces);
        for (std::string piece; std::getline(all, piece, '|');) {
            std::string text(start);
            for (std::size_t number = 0; number < kPieces; ++number) {
                text += piece;
            }
            EXPECT_EQ(platform::LinkDetector::linksIn(text).size(), links) << start << piece;
        }
    };
    expectLinks(
        0, "", "@|a@|a.|:|http://|http://a|http://a@|www.|_www.|\xC3\xA4www.|mailto:a@|a://");
    expectLinks(0, "", "data:|\xF0\x9F\x98\x80@");
    expectLinks(kPieces, "", "http://a:|http://\xC3\xA4 |a@b.cc ");
    expectLinks(1, "http://b.example/", "(|)|([{.|http://");
    expectLinks(1, "mailto:a@b.example", ",a@b.example");
}

}  // namespace
}  // namespace quillet::test
