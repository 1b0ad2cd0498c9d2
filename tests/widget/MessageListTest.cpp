#include <cstdint>
#include <gtest/gtest.h>

#include "widget/MessageList.h"

namespace quillet::test {
namespace {

using MessageList::Messages;
using platform::Number;

std::shared_ptr<ExtensionMessage> message(const std::string& messageId,
                                          std::optional<Number> folder = Number(std::int64_t{1})) {
    auto made = ExtensionMessage::init();
    made->setMessageId(messageId);
    made->setAccount("a@x");
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
    const auto all = listOf({message("i"),
                             message("t", Number(11.0)),
                             message("b", Number(true)),
                             message("m", Number(std::uint64_t{12})),
                             message("o", Number(std::int64_t{13})),
                             message("n", std::nullopt),
                             message("z", Number(std::int64_t{0}))});
    const auto before = listOf({message("x"), message("x"), message("y")});
    const std::pair<std::int64_t, const char*> cases[] = {
        {0, "itbmonz"},
        {1, "ib"},
        {2, "t"},
        {3, "m"},
        {4, "o"},
        {5, "xy"},
        {INT64_MIN, "xy"},
    };
    for (const auto& [segmented, shown] : cases) {
        EXPECT_EQ(identifiers(*MessageList::toShow(all, before, segmented)), shown) << segmented;
    }
    EXPECT_TRUE(MessageList::toShow(all, nullptr, 7)->empty());
}

TEST(MessageList, TheNewestTenOfTheSegmentAreShownAndOfThemNoDuplicates) {
    Messages all;
    for (const char identifier : std::string("tuv1234267890ab")) {
        const std::int64_t folder = identifier >= 't' ? 11 : 1;
        all.push_back(message({identifier}, Number(folder)));
    }
    EXPECT_EQ(identifiers(*MessageList::toShow(listOf(all), nullptr, 1)), "123467890");
    EXPECT_EQ(identifiers(*MessageList::toShow(listOf(all), nullptr, 0)), "tuv123467");
}

}  // namespace
}  // namespace quillet::test
