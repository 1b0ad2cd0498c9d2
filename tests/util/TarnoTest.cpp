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

Items makeItems(std::initializer_list<Item> items) {
    Items list;
    for (const Item& item : items) {
        list.push_back(std::make_shared<Item>(item));
    }
    return list;
}

std::string namesOf(const Items& items) {
    std::string names;
    for (const auto& item : items) {
        names += item->name;
    }
    return names;
}

constexpr auto kGroup = [](const std::shared_ptr<Item>& item) { return item->group; };

}  // namespace

TEST(Tarno, UniqueKeepsTheFirstOfEqualElementsInItsPlace) {
    EXPECT_EQ(Tarno::Unique(Numbers{1, 2, 1, 3, 2}), (Numbers{1, 2, 3}));
    EXPECT_TRUE(Tarno::Unique(Numbers{}).empty());

    const Items items = makeItems({{"a", 1}, {"b", 2}, {"a", 3}});
    const Items unique = Tarno::Unique(items);
    EXPECT_EQ(namesOf(unique), "ab");
    EXPECT_EQ(unique.front(), items.front());
}

TEST(Tarno, ListsWithNullElementsAreCompared) {
    const Items items{nullptr, std::make_shared<Item>(), nullptr};
    EXPECT_EQ(Tarno::Unique(items).size(), 2U);
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

TEST(Tarno, UniqueByKeyDropsElementsWithoutAValue) {
    const Items items = makeItems({{"a", 1}, {"b", {}}, {"c", 2}, {"d", 1}});
    EXPECT_EQ(namesOf(Tarno::Unique(items, kGroup)), "ac");
}

TEST(Tarno, ReversedListAndCount) {
    EXPECT_EQ(Tarno::reversedArrayx(Numbers{1, 2, 3}), (Numbers{3, 2, 1}));
    EXPECT_EQ(Tarno::countNumber(Numbers{}), 0U);
    EXPECT_EQ(Tarno::countNumber(Numbers{5, 5}), 2U);
}

TEST(Tarno, GroupByKeyPathGroupsNeighboursOnly) {
    struct Case {
        const char* name;
        std::vector<std::optional<int>> values;
        std::vector<std::size_t> groupSizes;
    };
    const Case cases[] = {
        {"empty", {}, {}},
        {"run, other, run again", {1, 1, 2, 1}, {2, 1, 1}},
        {"absent values stand alone", {1, {}, {}, 1}, {1, 1, 1, 1}},
        {"absent first value", {{}, 1, 1}, {0, 1, 2}},
    };
    for (const Case& testCase : cases) {
        SCOPED_TRACE(testCase.name);
        Items items;
        for (const auto& value : testCase.values) {
            items.push_back(std::make_shared<Item>(Item{"x", value}));
        }
        std::vector<std::size_t> sizes;
        for (const Items& group : Tarno::groupByKeyPath(items, kGroup)) {
            sizes.push_back(group.size());
        }
        EXPECT_EQ(sizes, testCase.groupSizes);
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
