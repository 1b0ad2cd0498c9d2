#include <gtest/gtest.h>
#include <string>

#include "util/Tarno.h"

namespace quillet::test {
namespace {

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
    EXPECT_EQ(countNumber(Numbers{5, 5}), 2U);
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
