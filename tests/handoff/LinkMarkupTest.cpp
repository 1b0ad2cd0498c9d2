#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "handoff/LinkMarkup.h"

namespace quillet::test {
namespace {

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
    EXPECT_EQ(markUpLinks(a + ", " + b + "x", {b, a}, 2 * added),
              anchor(a) + ", " + anchor(b) + "x");
}

// Without a limit, each of these fills the memory or takes hours.
TEST(LinkMarkup, HostileLinksAddNoMoreThanTheLimitAndEnd) {
    constexpr std::size_t kMost = 100'000;
    std::vector<std::string> nested;
    std::vector<std::string> different;
    std::string period;
    for (std::size_t i = 60'000; i > 0; --i) {
        different.push_back("http://a" + std::to_string(100'000 + i));
        period += "http://a/";
        if (i <= 1'000) {
            nested.push_back("http://a.b/" + std::string(i, '/') + "c");
        }
    }
    const struct {
        std::vector<std::string> links;
        bool isMarkedUp;  // at least in part
    } cases[] = {
        {std::vector<std::string>(1'000, "http://a.b"), true},
        {nested, true},
        {different, true},
        {{period + period, period + "b"}, false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.links.front().substr(0, 20));
        std::string text;
        for (const std::string& link : row.links) {
            text += link + " ";
        }
        const std::string html = markUpLinks(text, row.links, kMost + text.size());
        EXPECT_LE(html.size(), 2 * text.size() + kMost);
        EXPECT_EQ(html.size() > text.size() + kMost / 4, row.isMarkedUp);
    }
}

}  // namespace
}  // namespace quillet::test
