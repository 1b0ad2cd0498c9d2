// What becomes of the list when the user acts on a message.

#include <gmock/gmock.h>

#include "tests/support/CalledActions.h"
#include "tests/widget/StoreFixture.h"
#include "widget/HostCommands.h"

namespace quillet::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Messages = std::vector<std::shared_ptr<ExtensionMessage>>;

class ActionTest : public StoreFixture {
protected:
    ActionTest() {
        writeFile("a@x",
                  "1.plist",
                  fileXml(messageXml("a", 5000) + messageXml("b", 4000) + messageXml("c", 3000) +
                          messageXml("d", 2000) + messageXml("e", 1000)));
        controller->view();
        update();
    }

    std::shared_ptr<ExtensionMessage> messageAt(std::size_t row) const {
        return controller->dataToShow()->at(row);
    }
    std::vector<std::string> onDisk() const { return identifiersOf(controller->dataFromDisk()); }
    std::size_t rows() const { return controller->myTableView()->numberOfRows(); }
};

TEST_F(ActionTest, ArchivedMessageLeavesBothListsAtOnceAndItsRowOneTurnLater) {
    controller->myTableView()->setSelectedRow(3);
    std::vector<std::string> shownWhenAnnounced;
    const CalledActions actions([&] { shownWhenAnnounced = shown(); });
    const auto third = messageAt(2);
    EXPECT_FALSE(ExtensionUtilities::LaunchCommandForMessages({nullptr, third}, "archive", true))
        << "there is no host in this test";
    EXPECT_THAT(actions.names(), ElementsAre("archive c"));
    EXPECT_THAT(shownWhenAnnounced, ElementsAre("a", "b", "d", "e"));
    EXPECT_THAT(onDisk(), ElementsAre("a", "b", "d", "e"));
    EXPECT_EQ(rows(), 5U);
    mainQueue.runAll();
    EXPECT_EQ(rows(), 4U);
    EXPECT_EQ(controller->myTableView()->selectedRow(), 2) << "the row above it has gone";
    EXPECT_EQ(controller->viewHeightContraint()->constant(), 300) << "until the next rebuild";
    update();
    EXPECT_THAT(shown(), ElementsAre("a", "b", "c", "d", "e")) << "the store still has it";
}

TEST_F(ActionTest, EveryDuplicateOfADeletedMessageLeavesTheLists) {
    const auto first = messageAt(0);
    const Messages all = *controller->dataFromDisk();
    Messages twice = all;
    twice.insert(twice.end(), all.begin(), all.end());
    controller->setDataFromDisk(std::make_shared<const Messages>(twice));
    ExtensionUtilities::LaunchCommandForMessages({first}, "delete", true);
    EXPECT_THAT(onDisk(), ElementsAre("b", "c", "d", "e", "b", "c", "d", "e"));
}

TEST_F(ActionTest, OnlyMessagesThatAreShownAndActedOnLoseTheirRow) {
    const auto stranger = ExtensionMessage::init();
    stranger->setMessageId("stranger");
    stranger->setAccount("a@x");
    const auto unsendable = messageAt(1);
    unsendable->setMessageId("<b@x>");
    for (const std::any& foreign :
         {std::any(),
          std::any(std::string("archive")),
          std::any(ExtensionUtilities::CalledAction{nullptr, "archive"}),
          std::any(ExtensionUtilities::CalledAction{stranger, "archive"})}) {
        platform::NotificationCenter::defaultCenter().postNotification(
            ExtensionUtilities::kActionCalledNotification, foreign);
    }
    const CalledActions actions;
    ExtensionUtilities::LaunchCommandForMessages({messageAt(0)}, "open", false);
    ExtensionUtilities::LaunchCommandForMessages({messageAt(0)}, "reply", false);
    ExtensionUtilities::LaunchCommandForMessages({unsendable}, "archive", true);
    ExtensionUtilities::LaunchCommandForMessages({stranger}, "delete", true);
    EXPECT_THAT(actions.names(), ElementsAre("open a", "reply a", "delete stranger"));
    mainQueue.runAll();
    EXPECT_EQ(rows(), 5U);
    EXPECT_EQ(onDisk().size(), 5U);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ActionTest, ARebuildBeforeTheSlideKeepsTheOtherRows) {
    controller->myTableView()->setSelectedRow(3);
    controller->ReloadData();
    ExtensionUtilities::LaunchCommandForMessages({messageAt(1)}, "delete", true);
    mainQueue.runAll();
    EXPECT_THAT(shown(), ElementsAre("a", "c", "d", "e"));
    EXPECT_EQ(rows(), 4U);
    EXPECT_EQ(controller->myTableView()->selectedRow(), 2) << "still the row of \"d\"";
    EXPECT_EQ(controller->viewHeightContraint()->constant(), 240);
}

TEST_F(ActionTest, TwoMessagesOfOneCommandBothSlideOut) {
    ExtensionUtilities::LaunchCommandForMessages({messageAt(1), messageAt(3)}, "archive", true);
    EXPECT_THAT(shown(), ElementsAre("a", "c", "e"));
    mainQueue.runAll();
    EXPECT_EQ(rows(), 3U);
}

TEST_F(ActionTest, ARowChosenBeforeTheSlideOpensTheMessageThatItShows) {
    ExtensionUtilities::LaunchCommandForMessages({messageAt(1)}, "archive", true);
    const CalledActions actions;
    controller->myTableView()->setSelectedRow(3);
    controller->tableViewSelectionDidChange();
    EXPECT_THAT(actions.names(), ElementsAre("open d"));
}

}  // namespace
}  // namespace quillet::test
