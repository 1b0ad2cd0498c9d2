#include <gtest/gtest.h>
#include <numeric>
#include <string>
#include <vector>

#include "handoff/LinkMarkup.h"

namespace quillet::test {
namespace {

std::string joined(const std::vector<std::string>& links) {
    return std::accumulate(
        links.begin(), links.end(), std::string(), [](std::string text, const std::string& link) {
            return std::move(text) + link + " ";
        });
}

std::string anchor(const std::string& link) {
    return "<a href='" + link + "'>" + link + "</a>";
}

TEST(LinkMarkup, AReplacementThatWouldAddMoreThanTheLimitIsLeftOutAndTheNextOnesAreMade) {
    const std::string a = "http://a.example";
    const std::string b = "http://b.example";
    const std::size_t added = anchor(a).size() - a.size();
    const struct {
        std::size_t most;
        std::string html;
    } cases[] = {
        {added - 1, a + " " + b},
        {added, anchor(a) + " " + b},
        {2 * added, anchor(a) + " " + anchor(b)},
        {3 * added, "<a href='" + anchor(a) + "'>" + anchor(a) + "</a> " + b},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(markUpLinks(a + " " + b, {a, a, b}, row.most), row.html) << row.most;
    }
}

TEST(LinkMarkup, AllOfVeryManyLinksAreMarkedUp) {
    std::string text;
    std::string html;
    std::vector<std::string> links;
    for (int i = 10'000; i < 20'000; ++i) {
        links.push_back("http://a.example/" + std::to_string(i));
        text += std::string(500, 'x') + " " + links.back() + ", ";
        html += std::string(500, 'x') + " " + anchor(links.back()) + ", ";
    }
    EXPECT_EQ(markUpLinks(text, links, text.size()), html);
}

// Without a limit each of these fills the memory or takes hours.
TEST(LinkMarkup, HostileLinksAddNoMoreThanTheLimitAndEnd) {
    constexpr std::size_t kMost = 100'000;
    std::vector<std::string> nested;
    std::vector<std::string> periodic;
    std::vector<std::string> different;
    for (std::size_t i = 1'000; i > 0; --i) {
        nested.push_back("http://a.b/" + std::string(i, '/') + "c");
    }
    for (std::size_t i = 0; i < 60'000; ++i) {
        different.push_back("http://a" + std::to_string(i));
    }
    std::string period;
    for (std::size_t i = 0; i < 50'000; ++i) {
        period += "http://a/";
    }
    periodic = {period + period, period + "b"};
    const struct {
        std::vector<std::string> links;
        bool isMarkedUp;  // for a part at least
    } cases[] = {
        {std::vector<std::string>(1'000, "http://a.b"), true},
        {nested, true},
        {different, true},
        {periodic, false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.links.front().substr(0, 20));
        const std::string text = joined(row.links);
        const std::string html = markUpLinks(text, row.links, kMost + text.size());
        EXPECT_LE(html.size(), 2 * text.size() + kMost);
        EXPECT_EQ(html.size() > text.size() + kMost / 4, row.isMarkedUp);
    }
}

}  // namespace
}  // namespace quillet::test
