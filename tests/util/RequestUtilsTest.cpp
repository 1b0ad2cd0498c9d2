#include <gtest/gtest.h>
#include <random>

#include "platform/base/Exception.h"
#include "tests/support/RandomText.h"
#include "util/RequestUtils.h"

namespace quillet::test {
namespace {

using namespace RequestUtils;
using List = ParameterMap::List;
using platform::Exception;

TEST(RequestUtils, OnlyUnreservedCharactersAreNotEscaped) {
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        const bool kept = byte < 0x80 && (std::isalnum(byte) != 0 ||
                                          std::string("-_.~").find(text) != std::string::npos);
        char escape[4];
        std::snprintf(escape, sizeof escape, "%%%02X", static_cast<unsigned>(byte));
        EXPECT_EQ(URLEncodedString(text), kept ? text : escape);
    }
    EXPECT_EQ(URLEncodedString("a b+\xE2\x82\xAC"), "a%20b%2B%E2%82%AC");
}

TEST(RequestUtils, ComponentIsDecodedOnlyWhereItIsWhole) {
    const struct {
        const char* text;
        std::optional<std::string> decoded;
    } cases[] = {
        {"a+b%2Bc%20d", "a b+c d"},
        {"%e2%82%AC", "\xE2\x82\xAC"},
        {"\xE2%82\xAC", "\xE2\x82\xAC"},
        {"%00", std::string(1, '\0')},
        {"", ""},
        {"%", {}},
        {"a%4", {}},
        {"%4g", {}},
        {"%-1", {}},
        {"%C3", {}},
        {"%ED%A0%80", {}},
        {"%C0%80", {}},
        {"\xFF", {}},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(URLDecodedString(row.text, true), row.decoded) << row.text;
    }
    EXPECT_EQ(URLDecodedString("a+b%2B", false), "a+b+");
}

TEST(RequestUtils, QueryIsFoundInUrlsAndAsABareQuery) {
    const struct {
        const char* text;
        Range range;
        std::optional<std::string_view> query;
    } cases[] = {
        {"page?x=1#frag", {4, 4}, "x=1"},
        {"page?", {4, 1}, ""},
        {"page#frag", {}, {}},
        {"a", {}, {}},
        {"", {}, {}},
        {"a=1&b=2#f", {0, 7}, "a=1&b=2"},
        {"??a", {0, 3}, "?a"},
        {"a=1#b?c=2", {0, 3}, "a=1"},
        {"a#b?c=2", {}, {}},
        {"#?", {}, {}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(rangeOfURLQuery(row.text), row.range);
        EXPECT_EQ(URLQuery(row.text), row.query);
    }
}

TEST(RequestUtils, QueryIsBuiltByThePolicy) {
    const struct {
        ParameterMap map;
        unsigned options;
        const char* query;
    } cases[] = {
        {{}, 0, ""},
        {{{"a", "x y"}}, 0, "a=x%20y"},
        {{{"to", List{"p", "q"}}}, 0, "to=p&to=q"},
        {{{"to", List{"p", "q"}}}, DuplicatesAsArray | BracketKeys, "to[]=p&to[]=q"},
        {{{"to", List{"p", "q"}}}, BracketKeys, "to[]=p&to[]=q"},
        {{{"to", List{"p", "q"}}}, DuplicatesKeepLast, "to=q"},
        {{{"to", List{"p", "q"}}}, DuplicatesKeepFirst | BracketKeys, "to=p"},
        {{{"to", List{"p", "q"}}}, 7 | BracketKeys, "to[]=p&to[]=q"},
        {{{"a", "1"}}, EveryValueAsArray | BracketKeys, "a[]=1"},
        {{{"a", "1"}}, EveryValueAsArray, "a=1"},
        {{{"a", "1"}}, DuplicatesAsArray | BracketKeys, "a=1"},
        {{{"a", "1"}}, 16, "a=1"},
        {{{"x", List{}}, {"z&", "="}, {"", ""}, {"y", List{}}}, 0, "z%26=%3D&="},
        {{{"x", List{}}}, DuplicatesKeepLast, ""},
        {{{"x", List{}}}, DuplicatesKeepFirst, ""},
        {{{"b", "1"}, {"a", "2"}, {"b", "3"}}, 0, "b=3&a=2"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(URLQueryWithParameters(row.map, row.options), row.query);
    }
}

TEST(RequestUtils, QueryIsParsedByThePolicy) {
    const struct {
        const char* text;
        std::initializer_list<unsigned> options;
        ParameterMap map;
    } cases[] = {
        {"to=a&to=b", {0, 1, 8}, {{"to", "b"}}},
        {"to=a&to=b", {2, 10}, {{"to", "a"}}},
        {"to=a&to=b", {3, 4, 5, 6, 7}, {{"to", List{"a", "b"}}}},
        {"to=a&to=b&to[]=c", {3, 4, 7}, {{"to", List{"a", "b", "c"}}}},
        {"to[]=a", {0, 1, 2, 5, 6, 7}, {{"to", "a"}}},
        {"to%5B%5D=a", {3, 4}, {{"to", List{"a"}}}},
        {"x=1", {3}, {{"x", "1"}}},
        {"x=1", {4}, {{"x", List{"1"}}}},
        {"x=1&x[]=2", {3}, {{"x", List{"1", "2"}}}},
        {"a=b=c", {0, 1, 2, 3}, {{"a", "b"}}},
        {"", {0, 4}, {}},
        {"a", {0}, {}},
        {"?a", {0}, {}},
        {"?%zz&a=1", {0}, {{"a", "1"}}},
        {"=a&%41+&=%FF%x", {2, 10}, {{"", "a"}}},
        {"?a=", {0}, {{"a", ""}}},
        {"?=x&[]=y", {3}, {{"", List{"x", "y"}}}},
        {"?a=1&&b=2&", {0}, {{"a", "1"}, {"b", "2"}}},
        {"page?", {0}, {}},
        {"page?x=1#frag&y=2", {0}, {{"x", "1"}}},
        {"page#f?x=1", {0}, {}},
        {"q=a+b%2Bc%20d&%2B+=1", {0}, {{"q", "a b+c d"}, {"+ ", "1"}}},
    };
    for (const auto& row : cases) {
        for (const unsigned options : row.options) {
            EXPECT_EQ(URLQueryParametersWithOptions(row.text, options), row.map)
                << row.text << " with " << options;
        }
    }
}

TEST(RequestUtils, PairThatDoesNotDecodeRaises) {
    for (const char* query : {"a=%", "%4=b", "a=1&b=%FF", "\xFF=1", "a=%C3&a=1"}) {
        EXPECT_THROW(URLQueryParameters(query), Exception) << query;
        EXPECT_THROW(URLQueryParametersWithOptions(query, DuplicatesKeepFirst), Exception) << query;
    }
    EXPECT_THROW(URLQueryParameters("a=1&a=%FF"), Exception);
}

TEST(RequestUtils, QueryIsAppendedBeforeTheFragment) {
    const struct {
        const char* receiver;
        const char* query;
        const char* result;
    } cases[] = {
        {"page", "b=2", "page?b=2"},
        {"page?", "b=2", "page?b=2"},
        {"page?a=1#f?", "?b=2#g", "page?a=1&b=2#f?"},
        {"page?a=1&", "b=2", "page?a=1&b=2"},
        {"page?a=1?", "b=2", "page?a=1?&b=2"},
        {"page#f", "b", "page?b#f"},
        {"http://x.example/a=b", "c=1", "http://x.example/a=b?c=1"},
        {"a=1", "b=2", "a=1&b=2"},
        {"page#f", "?#g", "page#f"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(stringByAppendingURLQuery(row.receiver, row.query), row.result);
    }
}

TEST(RequestUtils, MergedQueryLosesItsQuestionMark) {
    const struct {
        const char* receiver;
        const char* query;
        unsigned options;
        const char* result;
    } cases[] = {
        {"page?a=1", "b=2", 0, "pagea=1&b=2"},
        {"page?a=1#f", "http://x.example/?a=2&b=3#g", 0, "pagea=2&b=3#f"},
        {"page?a=1#f", "http://x.example/", 0, "page?a=1#f"},
        {"page?a=1", "b?", 0, "page?a=1"},
        {"page#f", "b=2", 0, "page?b=2#f"},
        {"page?", "x??b=2", 0, "page??b=2"},
        {"a=1", "a=2", DuplicatesKeepFirst, "a=1"},
        {"a=1", "a=2", DuplicatesAsArray, "a=1&a=2"},
        {"a=1", "a=2", 6, "a=2"},
        {"a=1", "a=2&a=3", 5, "a=1&a=2&a=3"},
        {"a=1&a=2", "a=3", DuplicatesAsArray | BracketKeys, "a[]=1&a[]=2&a[]=3"},
        {"a[]=1", "a=2&b=3", DuplicatesAsArray | BracketKeys, "a[]=1&a[]=2&b=3"},
        {"a=1", "a=2", EveryValueAsArray, "a=1&a=2"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(stringByMergingURLQuery(row.receiver, row.query, row.options), row.result);
    }
    EXPECT_THROW(stringByMergingURLQuery("a=1", "b=2", EveryValueAsArray), Exception);
}

TEST(RequestUtils, RandomMapsSurviveBuildingAndParsing) {
    std::mt19937 random(20261114);
    for (int round = 0; round < 300; ++round) {
        ParameterMap map;
        for (auto left = random() % 30; left > 0; --left) {
            // A bracket suffix belongs to the format and not to the key.
            map.tryEmplace(randomText(random) + ".").first =
                List{randomText(random), randomText(random)};
        }
        for (const unsigned options : {DuplicatesAsArray | BracketKeys, EveryValueAsArray + 0U}) {
            ASSERT_EQ(
                URLQueryParametersWithOptions("?" + URLQueryWithParameters(map, options), options),
                map);
        }
        const std::string text = randomText(random);
        ASSERT_EQ(URLDecodedString(URLEncodedString(text), true), text);
    }
}

TEST(RequestUtils, AMillionPairsAreAllKept) {
    constexpr std::size_t kPairs = 1'000'000;
    std::string repeated;
    std::string distinct;
    for (std::size_t i = 0; i < kPairs; ++i) {
        repeated += "&k[]=" + std::to_string(i);
        distinct += "&k" + std::to_string(i) + "=v";
    }
    const ParameterMap list = URLQueryParametersWithOptions(repeated, DuplicatesAsArray);
    EXPECT_EQ(std::get<List>(*list.find("k")).size(), kPairs);
    const ParameterMap keys = URLQueryParameters(distinct);
    EXPECT_EQ(keys.entries().size(), kPairs);
    EXPECT_EQ(*keys.find("k999999"), ParameterMap::Value("v"));
    EXPECT_EQ(keys.find("k1000000"), nullptr);
}

}  // namespace
}  // namespace quillet::test
