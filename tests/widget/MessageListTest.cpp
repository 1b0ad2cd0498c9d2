#include <cstdint>
#include <gtest/gtest.h>

#include "widget/MessageList.h"

namespace quillet::test {

using MessageList::Messages;
using platform::Number;

namespace {

std::shared_ptr<ExtensionMessage> message(const std::string& messageId,
                                          std::optional<double> date = 0,
                                          std::optional<Number> folder = Number(std::int64_t{1})) {
    auto made = ExtensionMessage::init();
    made->setMessageId(messageId);
    made->setAccount("a@x");
    made->setDate(date);
    made->setFolderStandardId(folder);
    return made;
}

std::string identifiers(const Messages& messages) {
    std::string text;
    for (const auto& one : messages) {
        text += one->messageId().value_or("-");
    }
    return text;
}

ExtensionMessageList listOf(Messages messages) {
    return std::make_shared<const Messages>(std::move(messages));
}

}  // namespace

TEST(MessageList, SortIsDescendingStableAndPutsUndatedLast) {
    const auto block = RecordBlock::make();
    EXPECT_TRUE(MessageList::sortedNewestFirst(block).empty());
    std::string name = "a";
    for (const std::optional<double> date : std::initializer_list<std::optional<double>>{
             1, std::nullopt, 2, 1, -5, std::nullopt, 1e300, 1.0000000000000002}) {
        block->reserve(1);
        ExtensionMessage& record = block->append();
        record.setMessageId(name);
        record.setDate(date);
        ++name.front();
    }
    EXPECT_EQ(identifiers(MessageList::sortedNewestFirst(block)), "gchadebf");
}

TEST(MessageList, StoredSegmentChoosesTheFolder) {
    const auto all = listOf({message("i", 9, Number(std::int64_t{1})),
                             message("t", 8, Number(11.0)),
                             message("b", 7, Number(true)),
                             message("m", 6, Number(std::uint64_t{12})),
                             message("o", 5, Number(std::int64_t{13})),
                             message("n", 4, std::nullopt),
                             message("z", 3, Number(std::int64_t{0}))});
    const auto before = listOf({message("x"), message("x"), message("y")});
    const std::pair<std::int64_t, const char*> cases[] = {
        {0, "itbmonz"},
        {1, "ib"},
        {2, "t"},
        {3, "m"},
        {4, "o"},
        {5, "xy"},
        {-1, "xy"},
        {INT64_MIN, "xy"},
        {INT64_MAX, "xy"},
    };
    for (const auto& [segmented, shown] : cases) {
        EXPECT_EQ(identifiers(*MessageList::toShow(all, before, segmented)), shown) << segmented;
    }
    EXPECT_TRUE(MessageList::toShow(all, nullptr, 7)->empty());
}

TEST(MessageList, TheNewestTenOfTheSegmentAreShownAndOfThemNoDuplicates) {
    Messages all;
    for (const char* identifier : {"t", "u", "v"}) {
        all.push_back(message(identifier, 0, Number(std::int64_t{11})));
    }
    for (const char* identifier : {"1", "2", "3", "4", "2", "6", "7", "8", "9", "0", "a", "b"}) {
        all.push_back(message(identifier));
    }
    EXPECT_EQ(identifiers(*MessageList::toShow(listOf(all), nullptr, 1)), "123467890");
    EXPECT_EQ(identifiers(*MessageList::toShow(listOf(all), nullptr, 0)), "tuv123467");
}

}  // namespace quillet::test
