#include <array>
#include <gtest/gtest.h>
#include <tuple>

#include "platform/base/Ascii.h"
#include "platform/base/Exception.h"
#include "util/RequestUtils.h"

namespace quillet::test {
namespace {

using namespace RequestUtils;
using List = ParameterMap::List;
using platform::Exception;

TEST(RequestUtils, OnlyUnreservedCharactersAreNotEscaped) {
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        const bool kept = platform::isAsciiAlphanumeric(text[0]) ||
                          (byte != 0 && std::string("-_.~").find(text) != std::string::npos);
        const std::string encoded = URLEncodedString(text);
        EXPECT_EQ(encoded.size(), kept ? 1U : 3U) << byte;
        EXPECT_EQ(URLDecodedString(encoded, true),
                  byte < 0x80 ? std::optional(text) : std::nullopt);
    }
    EXPECT_EQ(URLEncodedString("a b+\xE2\x82\xAC"), "a%20b%2B%E2%82%AC");
}

TEST(RequestUtils, ComponentIsDecodedOnlyWhereItIsWhole) {
    EXPECT_EQ(URLDecodedString("a+b%2Bc%20d", true), "a b+c d");
    EXPECT_EQ(URLDecodedString("a+b%2B", false), "a+b+");
    EXPECT_EQ(URLDecodedString("\xE2%82\xAC%e2%82%AC", true), "\xE2\x82\xAC\xE2\x82\xAC");
    EXPECT_EQ(URLDecodedString("%00", true), std::string(1, '\0'));
    for (const char* text : {"%", "a%4", "%4g", "%-1", "%C3", "%ED%A0%80", "%C0%80", "\xFF"}) {
        EXPECT_EQ(URLDecodedString(text, true), std::nullopt) << text;
    }
}

TEST(RequestUtils, QueryIsFoundInUrlsAndAsABareQuery) {
    const struct {
        std::string_view text;
        Range range;
        std::optional<std::string_view> query;
    } cases[] = {
        {"page?x=1#frag", {4, 4}, "x=1"},
        {"page?", {4, 1}, ""},
        {"", {}, {}},
        {"a=1&b=2#f", {0, 7}, "a=1&b=2"},
        {"??a", {0, 3}, "?a"},
        {"a=1#b?c=2", {0, 3}, "a=1"},
        {"a#b?c=2", {}, {}},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(rangeOfURLQuery(row.text), row.range) << row.text;
        EXPECT_EQ(URLQuery(row.text), row.query) << row.text;
    }
}

TEST(RequestUtils, QueryIsBuiltByThePolicy) {
    const ParameterMap list{{"to", List{"p", "q"}}};
    const ParameterMap text{{"a", "x y"}};
    const ParameterMap empty{{"x", List{}}};
    const std::tuple<ParameterMap, unsigned, const char*> cases[] = {
        {list, 0, "to=p&to=q"},
        {list, 16, "to=p&to=q"},
        {list, BracketKeys, "to[]=p&to[]=q"},
        {list, DuplicatesKeepLast, "to=q"},
        {list, DuplicatesKeepFirst | BracketKeys, "to=p"},
        {list, 7 | BracketKeys, "to[]=p&to[]=q"},
        {text, 0, "a=x%20y"},
        {text, EveryValueAsArray | BracketKeys, "a[]=x%20y"},
        {text, EveryValueAsArray, "a=x%20y"},
        {text, DuplicatesAsArray | BracketKeys, "a=x%20y"},
        {empty, DuplicatesKeepLast, ""},
        {empty, DuplicatesKeepFirst, ""},
        {{{"x", List{}}, {"z&", "="}, {"", ""}, {"y", List{}}}, 0, "z%26=%3D&="},
        {{{"b", "1"}, {"a", "2"}, {"b", "3"}}, 0, "b=3&a=2"},
    };
    for (const auto& [map, options, query] : cases) {
        EXPECT_EQ(URLQueryWithParameters(map, options), query) << options;
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
        {"x=1", {4}, {{"x", List{"1"}}}},
        {"x=1&x[]=2", {3}, {{"x", List{"1", "2"}}}},
        {"a=b=c", {0, 1, 2, 3}, {{"a", "b"}}},
        {"", {0, 4}, {}},
        {"?a", {0}, {}},
        {"?%zz&a=1", {0}, {{"a", "1"}}},
        {"=a&%41+&=%FF%x", {2, 10}, {{"", "a"}}},
        {"?=x&[]=y", {3}, {{"", List{"x", "y"}}}},
        {"?a=1&&b=2&", {0}, {{"a", "1"}, {"b", "2"}}},
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
    const std::array<const char*, 3> cases[] = {
        {"page", "b=2", "page?b=2"},
        {"page?", "b=2", "page?b=2"},
        {"page?a=1#f?", "?b=2#g", "page?a=1&b=2#f?"},
        {"page?a=1&", "b=2", "page?a=1&b=2"},
        {"page?a=1?", "b=2", "page?a=1?&b=2"},
        {"http://x.example/a=b#f", "c", "http://x.example/a=b?c#f"},
        {"a=1", "b=2", "a=1&b=2"},
        {"page#f", "?#g", "page#f"},
    };
    for (const auto& [receiver, query, result] : cases) {
        EXPECT_EQ(stringByAppendingURLQuery(receiver, query), result);
    }
}

TEST(RequestUtils, MergedQueryLosesItsQuestionMark) {
    const std::tuple<const char*, const char*, unsigned, const char*> cases[] = {
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
    for (const auto& [receiver, query, options, result] : cases) {
        EXPECT_EQ(stringByMergingURLQuery(receiver, query, options), result);
    }
    EXPECT_THROW(stringByMergingURLQuery("a=1", "b=2", EveryValueAsArray), Exception);
}

TEST(RequestUtils, AMillionPairsAreAllKept) {
    constexpr std::size_t kPairs = 1'000'000;
    std::string query;
    for (std::size_t i = 0; i < kPairs; ++i) {
        query += "&k[]=v&" + std::to_string(i) + "=v";
    }
    const ParameterMap map = URLQueryParametersWithOptions(query, DuplicatesAsArray);
    EXPECT_EQ(std::get<List>(*map.find("k")).size(), kPairs);
    EXPECT_EQ(map.entries().size(), kPairs + 1);
    EXPECT_EQ(*map.find("999999"), ParameterMap::Value("v"));
    EXPECT_EQ(map.find("1000000"), nullptr);
}

}  // namespace
}  // namespace quillet::test
