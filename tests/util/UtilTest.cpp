#include <gtest/gtest.h>
#include <tuple>

#include "platform/base/Exception.h"
#include "util/RequestUtils.h"
#include "util/Tarno.h"

namespace quillet::test {
namespace {

using namespace RequestUtils;
using List = ParameterMap::List;
using platform::Exception;

using Text = const char*;

TEST(RequestUtils, OnlyUnreservedCharactersAreNotEscaped) {
    constexpr std::string_view kKept =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.~";
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        const std::string encoded = URLEncodedString(text);
        EXPECT_EQ(encoded == text, kKept.find(text) != std::string_view::npos) << byte;
        EXPECT_EQ(URLDecodedString(encoded, true),
                  byte < 0x80 ? std::optional(text) : std::nullopt);
    }
    EXPECT_EQ(URLEncodedString("a b+\xE2\x82\xAC"), "a%20b%2B%E2%82%AC");
}

TEST(RequestUtils, ComponentIsDecodedOnlyWhereItIsWhole) {
    EXPECT_EQ(URLDecodedString("a+b%2Bc%20d", true), "a b+c d");
    EXPECT_EQ(URLDecodedString("a+b%2B", false), "a+b+");
    EXPECT_EQ(URLDecodedString("\xE2%82\xAC%e2%82%AC", true), "\xE2\x82\xAC\xE2\x82\xAC");
    for (Text text : {"%", "a%4", "%4g", "%-1", "%C3", "%ED%A0%80", "%C0%80", "%E0%9F%BF"}) {
        EXPECT_EQ(URLDecodedString(text, true), std::nullopt) << text;
    }
}

TEST(RequestUtils, QueryIsFoundInUrlsAndAsABareQuery) {
    const std::tuple<Text, Range, std::optional<std::string_view>> cases[] = {
        {"page?x=1#frag", {4, 4}, "x=1"},
        {"page?", {4, 1}, ""},
        {"", {}, {}},
        {"a=1&b=2#f", {0, 7}, "a=1&b=2"},
        {"??a", {0, 3}, "?a"},
        {"a=1#b?c=2", {0, 3}, "a=1"},
        {"a#b?c=2", {}, {}},
    };
    for (const auto& [text, range, query] : cases) {
        EXPECT_EQ(rangeOfURLQuery(text), range) << text;
        EXPECT_EQ(URLQuery(text), query) << text;
    }
}

TEST(RequestUtils, QueryIsBuiltByThePolicy) {
    const ParameterMap list{{"to", List{"p", "q"}}};
    const ParameterMap text{{"a", "x y"}};
    const std::tuple<ParameterMap, unsigned, Text> cases[] = {
        {list, 0, "to=p&to=q"},
        {list, BracketKeys, "to[]=p&to[]=q"},
        {list, DuplicatesKeepLast, "to=q"},
        {list, DuplicatesKeepFirst | BracketKeys, "to=p"},
        {list, 7 | BracketKeys, "to[]=p&to[]=q"},
        {text, EveryValueAsArray | BracketKeys, "a[]=x%20y"},
        {text, EveryValueAsArray, "a=x%20y"},
        {{{"x", List{}}}, DuplicatesKeepLast, ""},
        {{{"x", List{}}, {"z&", "="}, {"", ""}, {"y", List{}}}, 0, "z%26=%3D&="},
        {{{"b", "1"}, {"a", "2"}, {"b", "3"}}, 0, "b=3&a=2"},
    };
    for (const auto& [map, options, query] : cases) {
        EXPECT_EQ(URLQueryWithParameters(map, options), query) << options;
    }
}

TEST(RequestUtils, QueryIsParsedByThePolicy) {
    const std::tuple<Text, std::vector<unsigned>, ParameterMap> cases[] = {
        {"to=a&to=b", {0, 1, 8}, {{"to", "b"}}},
        {"to=a&to=b", {2, 10}, {{"to", "a"}}},
        {"to=a&to=b", {3, 4, 5, 6, 7}, {{"to", List{"a", "b"}}}},
        {"to=a&to=b&to[]=c", {3, 4, 7}, {{"to", List{"a", "b", "c"}}}},
        {"to[]=a", {0, 1, 2, 5, 6, 7}, {{"to", "a"}}},
        {"to%5B%5D=a", {3, 4}, {{"to", List{"a"}}}},
        {"x=1&x[]=2", {3}, {{"x", List{"1", "2"}}}},
        {"a=b=c", {0, 1, 2, 3}, {{"a", "b"}}},
        {"", {0, 4}, {}},
        {"?%zz&a=1", {0}, {{"a", "1"}}},
        {"=a&%41+&=%FF%x", {2, 10}, {{"", "a"}}},
        {"?=x&[]=y", {3}, {{"", List{"x", "y"}}}},
        {"?a=1&&b=2&", {0}, {{"a", "1"}, {"b", "2"}}},
        {"page?x=1#frag&y=2", {0}, {{"x", "1"}}},
        {"page#f?x=1", {0}, {}},
        {"q=a+b%2Bc%20d&%2B+=1", {0}, {{"q", "a b+c d"}, {"+ ", "1"}}},
    };
    for (const auto& [query, all, map] : cases) {
        for (const unsigned options : all) {
            EXPECT_EQ(URLQueryParametersWithOptions(query, options), map) << query << options;
        }
    }
    for (Text query : {"a=%", "%4=b", "a=1&b=%FF", "\xFF=1", "a=1&a=%FF"}) {
        EXPECT_THROW(URLQueryParameters(query), Exception) << query;
    }
    EXPECT_THROW(URLQueryParametersWithOptions("a=%C3", DuplicatesKeepFirst), Exception);
}

TEST(RequestUtils, QueryIsAppendedBeforeTheFragment) {
    const std::tuple<Text, Text, Text> cases[] = {
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
    const std::tuple<Text, Text, unsigned, Text> cases[] = {
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

TEST(RequestUtils, ManyPairsAreAllKept) {
    constexpr std::size_t kPairs = 50'000;
    std::string query;
    for (std::size_t i = 0; i < kPairs; ++i) {
        query += "&k[]=v&" + std::to_string(i) + "=v";
    }
    const ParameterMap map = URLQueryParametersWithOptions(query, DuplicatesAsArray);
    EXPECT_EQ(std::get<List>(*map.find("k")).size(), kPairs);
    EXPECT_EQ(map.entries().size(), kPairs + 1);
    EXPECT_EQ(*map.find("49999"), ParameterMap::Value("v"));
    EXPECT_EQ(map.find("50000"), nullptr);
}

using namespace Tarno;
using Numbers = std::vector<int>;

// Equal by its name alone.
struct Item {
    std::string name;
    std::optional<int> group;

    bool isEqual(const Item* other) const { return other != nullptr && name == other->name; }
};
using Items = std::vector<std::shared_ptr<Item>>;

const auto kA = std::make_shared<Item>(Item{"a", 1});
const auto kNone = std::make_shared<Item>(Item{"none", {}});
const auto kC = std::make_shared<Item>(Item{"c", 2});
const auto kAlike = std::make_shared<Item>(Item{"a", 2});
constexpr auto kGroup = [](const std::shared_ptr<Item>& item) { return item->group; };

TEST(Tarno, ListsKeepTheirOrder) {
    EXPECT_EQ(Unique(Numbers{1, 2, 1, 3, 2}), (Numbers{1, 2, 3}));
    EXPECT_EQ(Unique(Items{kA, nullptr, kC, kAlike, nullptr}), (Items{kA, nullptr, kC}));
    EXPECT_EQ(Unique(Items{kA, kNone, kC, kAlike}, kGroup), (Items{kA, kC}));
    EXPECT_EQ(Intersect(Numbers{1, 1, 2}, Numbers{1}), (Numbers{1, 1}));
    EXPECT_EQ(reversedArrayx(Numbers{1, 2, 3}), (Numbers{3, 2, 1}));
    const auto one = std::make_shared<const Numbers>(Numbers{7});
    EXPECT_EQ(UniqueDict(one), one) << "the list itself";
    EXPECT_EQ(*UniqueDict(std::make_shared<const Numbers>(Numbers{7, 1, 7})), (Numbers{7, 1}));
    EXPECT_TRUE(UniqueDict(std::make_shared<const Numbers>())->empty());
}

TEST(Tarno, GroupByKeyPathGroupsNeighboursOnly) {
    const std::pair<Items, std::vector<Items>> cases[] = {
        {{}, {}},
        {{kA, kA, kC, kAlike, kA}, {{kA, kA}, {kC, kAlike}, {kA}}},
        {{kA, kNone, kNone, kA}, {{kA}, {kNone}, {kNone}, {kA}}},
        {{kNone, kA, kA}, {{}, {kNone}, {kA, kA}}},  // an empty group before an absent first value
    };
    for (const auto& [items, groups] : cases) {
        EXPECT_EQ(groupByKeyPath(items, kGroup), groups);
    }
}

TEST(Tarno, SplitLeavesTheRemainderInTheLastChunk) {
    const Numbers five{1, 2, 3, 4, 5};
    EXPECT_EQ(SplitWithRange(five, 2), (std::vector<Numbers>{{1, 2}, {3, 4}, {5}}));
    EXPECT_EQ(SplitWithRange(five, SIZE_MAX), std::vector<Numbers>{five});
    EXPECT_TRUE(SplitWithRange(Numbers{}, 2).empty());
    EXPECT_THROW(SplitWithRange(five, 0), std::invalid_argument);
}

TEST(Tarno, ContiguousPatternIsFoundInOnePassWithoutLookingBack) {
    EXPECT_TRUE(contains_contiguous_sub_array(Numbers{1, 2, 1, 2, 3}, {1, 2, 3}));
    EXPECT_FALSE(contains_contiguous_sub_array(Numbers{1, 1, 1, 2}, {1, 1, 2}));
    EXPECT_FALSE(contains_contiguous_sub_array(Numbers{1, 2, 3}, {3, 2}));
    EXPECT_FALSE(contains_contiguous_sub_array(Numbers{1, 2}, {1, 2, 3}));
    EXPECT_FALSE(contains_contiguous_sub_array(Numbers{1, 2, 3}, {}));
}

}  // namespace
}  // namespace quillet::test
