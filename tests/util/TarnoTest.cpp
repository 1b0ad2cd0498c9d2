#include <gtest/gtest.h>
#include <string>

#include "util/Tarno.h"

namespace quillet::test {

namespace {

using Numbers = std::vector<int>;

// An element that is equal by its name, whatever its place.
struct Item {
    std::string name;
    std::optional<int> group;

    bool isEqual(const Item* other) const { return other != nullptr && name == other->name; }
};
using Items = std::vector<std::shared_ptr<Item>>;

const std::shared_ptr<Item> kA = std::make_shared<Item>(Item{"a", 1});
const std::shared_ptr<Item> kNone = std::make_shared<Item>(Item{"none", {}});
const std::shared_ptr<Item> kC = std::make_shared<Item>(Item{"c", 2});
const std::shared_ptr<Item> kAlike = std::make_shared<Item>(Item{"a", 2});

constexpr auto kGroup = [](const std::shared_ptr<Item>& item) { return item->group; };

}  // namespace

TEST(Tarno, UniqueKeepsTheFirstOfEqualElementsInItsPlace) {
    EXPECT_EQ(Tarno::Unique(Numbers{1, 2, 1, 3, 2}), (Numbers{1, 2, 3}));
    EXPECT_TRUE(Tarno::Unique(Numbers{}).empty());
    EXPECT_EQ(Tarno::Unique(Items{kA, nullptr, kC, kAlike, nullptr}), (Items{kA, nullptr, kC}));
    EXPECT_EQ(Tarno::Unique(Items{kA, kNone, kC, kAlike}, kGroup), (Items{kA, kC}))
        << "by a key, which one has not";
}

TEST(Tarno, IntersectKeepsRepeatsOfTheReceiver) {
    EXPECT_EQ(Tarno::Intersect(Numbers{1, 1, 2}, Numbers{1}), (Numbers{1, 1}));
    EXPECT_TRUE(Tarno::Intersect(Numbers{1}, Numbers{}).empty());
}

TEST(Tarno, UniqueDictReturnsAListOfOneItself) {
    const auto one = std::make_shared<const Numbers>(Numbers{7});
    EXPECT_EQ(Tarno::UniqueDict(one), one);
    EXPECT_EQ(*Tarno::UniqueDict(std::make_shared<const Numbers>(Numbers{7, 7})), Numbers{7});
    EXPECT_TRUE(Tarno::UniqueDict(std::make_shared<const Numbers>())->empty());
}

TEST(Tarno, ReversedListAndCount) {
    EXPECT_EQ(Tarno::reversedArrayx(Numbers{1, 2, 3}), (Numbers{3, 2, 1}));
    EXPECT_EQ(Tarno::countNumber(Numbers{}), 0U);
    EXPECT_EQ(Tarno::countNumber(Numbers{5, 5}), 2U);
}

TEST(Tarno, GroupByKeyPathGroupsNeighboursOnly) {
    const std::pair<Items, std::vector<Items>> cases[] = {
        {{}, {}},
        {{kA, kA, kC, kAlike, kA}, {{kA, kA}, {kC, kAlike}, {kA}}},
        {{kA, kNone, kNone, kA}, {{kA}, {kNone}, {kNone}, {kA}}},
        {{kNone, kA, kA}, {{}, {kNone}, {kA, kA}}},  // an empty group before an absent first value
    };
    for (const auto& [items, groups] : cases) {
        EXPECT_EQ(Tarno::groupByKeyPath(items, kGroup), groups);
    }
}

TEST(Tarno, SplitLeavesTheRemainderInTheLastChunk) {
    const Numbers five{1, 2, 3, 4, 5};
    EXPECT_EQ(Tarno::SplitWithRange(five, 2), (std::vector<Numbers>{{1, 2}, {3, 4}, {5}}));
    EXPECT_EQ(Tarno::SplitWithRange(five, 9), std::vector<Numbers>{five});
    EXPECT_EQ(Tarno::SplitWithRange(five, SIZE_MAX), std::vector<Numbers>{five});
    EXPECT_TRUE(Tarno::SplitWithRange(Numbers{}, 2).empty());
    EXPECT_THROW(Tarno::SplitWithRange(five, 0), std::invalid_argument);
}

TEST(Tarno, ContiguousPatternIsFoundInOnePassWithoutLookingBack) {
    struct Case {
        Numbers list;
        Numbers pattern;
        bool found;
    };
    const Case cases[] = {
        {{1, 2, 3}, {2, 3}, true},
        {{1, 2, 3}, {3, 2}, false},
        {{1, 2, 3}, {}, false},
        {{}, {1}, false},
        {{1, 2, 1, 2, 3}, {1, 2, 3}, true},
        {{1, 1, 1, 2}, {1, 1, 2}, false},
        {{1, 2}, {1, 2, 3}, false},
    };
    for (const Case& testCase : cases) {
        SCOPED_TRACE(::testing::PrintToString(testCase.list));
        EXPECT_EQ(Tarno::contains_contiguous_sub_array(testCase.list, testCase.pattern),
                  testCase.found);
    }
}

}  // namespace quillet::test
