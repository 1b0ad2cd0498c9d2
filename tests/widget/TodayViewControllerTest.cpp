#include "tests/support/CalledActions.h"
#include "tests/widget/StoreFixture.h"
#include "widget/HostCommands.h"

namespace quillet::test {
namespace {

using ExtensionUtilities::LaunchCommandForMessages;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Messages = std::vector<std::shared_ptr<ExtensionMessage>>;

class TodayViewControllerTest : public StoreFixture {
protected:
    std::shared_ptr<ExtensionMessage> messageAt(std::size_t row) const {
        return controller->dataToShow()->at(row);
    }
    std::vector<std::string> onDisk() const { return identifiersOf(controller->dataFromDisk()); }
    platform::Table& table() const { return *controller->myTableView(); }
    double height() const { return controller->viewHeightContraint()->constant(); }
};

TEST_F(TodayViewControllerTest, OnlyAMissingLocationCountsAsNoData) {
    writeFile("a@x", "1.plist", fileXml(messageXml("m", 1)));
    EXPECT_EQ(update(), NCUpdateResultNewData);
    EXPECT_THAT(shown(), ElementsAre("m"));
    {
        const EnvironmentVariable missing("QUILLET_CONTAINER", container.path("not there"));
        EXPECT_EQ(update(), NCUpdateResultNewData);
        EXPECT_THAT(shown(), IsEmpty());
    }
    EXPECT_EQ(update(), NCUpdateResultNewData);
    EXPECT_THAT(shown(), ElementsAre("m"));
    const EnvironmentVariable none("QUILLET_CONTAINER", "");
    EXPECT_EQ(update(), NCUpdateResultNoData);
    EXPECT_THAT(shown(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(TodayViewControllerTest, ReloadLeavesAnUnchangedListAlone) {
    writeFile("a@x", "1.plist", fileXml(messageXml("m", 1)));
    controller->Reload();
    const auto first = controller->dataFromDisk();
    controller->Reload();
    EXPECT_EQ(controller->dataFromDisk(), first);
    writeFile("a@x", "2.plist", fileXml(messageXml("n", 200)));
    controller->Reload();
    EXPECT_THAT(onDisk(), ElementsAre("n", "m"));
    EXPECT_EQ(controller->dataToShow(), nullptr);  // the rebuild waits for its turn
    mainQueue.runAll();
    EXPECT_THAT(shown(), ElementsAre("n", "m"));
}

TEST_F(TodayViewControllerTest, FirstReadThatFindsNothingLeavesTheTableAtItsFirstHeight) {
    controller->view();
    controller->viewWillAppear();
    mainQueue.runAll();
    EXPECT_EQ(controller->dataToShow(), nullptr);
    EXPECT_EQ(height(), 50);
    EXPECT_EQ(update(), NCUpdateResultNewData);
    EXPECT_EQ(height(), 0);
}

TEST_F(TodayViewControllerTest, SegmentChangeFiltersAtOnceAndRereadsInTheBackground) {
    writeFile("a@x", "1.plist", fileXml(messageXml("i", 3000) + messageXml("t", 2000, 11)));
    controller->view();
    controller->viewWillAppear();
    EXPECT_EQ(table().numberOfRows(), 0U);
    mainQueue.runAll();
    EXPECT_EQ(table().numberOfRows(), 2U);
    EXPECT_EQ(height(), 120);
    defaults.setInteger(2, "segmented");
    writeFile("a@x", "2.plist", fileXml(messageXml("u", 4000, 11)));
    controller->selectedSegment(nullptr);
    mainQueue.runAll();
    EXPECT_EQ(table().numberOfRows(), 1U);
    EXPECT_EQ(height(), 60);
    backgroundQueue.runAll();
    EXPECT_THAT(shown(), ElementsAre("t"));
    mainQueue.runAll();
    EXPECT_THAT(shown(), ElementsAre("u", "t"));
}

TEST_F(TodayViewControllerTest, ControllerThatIsGoneIsNotReadForAgain) {
    controller->selectedSegment(nullptr);
    mainQueue.runAll();
    const std::weak_ptr<TodayViewController> weak = controller;
    controller.reset();
    EXPECT_TRUE(weak.expired());
    backgroundQueue.runAll();
}

TEST_F(TodayViewControllerTest, SelectionStaysWithItsMessageAndBeyondTheListSendsNothing) {
    writeFile("a@x", "1.plist", fileXml(messageXml("old", 1000) + messageXml("older", 500)));
    controller->view();
    update();
    const CalledActions actions;
    controller->tableViewSelectionDidChange();
    EXPECT_THAT(actions.names(), IsEmpty());
    table().setSelectedRow(0);
    writeFile("a@x", "2.plist", fileXml(messageXml("new", 2000)));
    update();
    EXPECT_EQ(table().selectedRow(), 1);
    controller->tableViewSelectionDidChange();
    EXPECT_THAT(actions.names(), ElementsAre("open old"));
    writeFile("a@x", "1.plist", fileXml(messageXml("older", 500)));
    update();
    EXPECT_EQ(table().selectedRow(), platform::Table::kNoRow);
    table().setSelectedRow(0);
    controller->setDataToShow(nullptr);
    controller->tableViewSelectionDidChange();
    EXPECT_THAT(actions.names(), ElementsAre("open old"));
}

TEST_F(TodayViewControllerTest, AnswersToTheNotificationCentre) {
    EXPECT_EQ(controller->widgetMarginInsetsForProposedMarginInsets({10, 20, 30, 40}),
              (EdgeInsets{10, 0, 30, 40}));
    EXPECT_FALSE(controller->widgetAllowsEditing());
}

// What becomes of the list when the user acts on a message.
class ActionTest : public TodayViewControllerTest {
protected:
    ActionTest() {
        writeFile("a@x",
                  "1.plist",
                  fileXml(messageXml("a", 5000) + messageXml("b", 4000) + messageXml("c", 3000) +
                          messageXml("d", 2000) + messageXml("e", 1000)));
        controller->view();
        update();
        table().setSelectedRow(3);
    }
};

TEST_F(ActionTest, ArchivedMessageLeavesBothListsAtOnceAndItsRowOneTurnLater) {
    std::vector<std::string> shownWhenAnnounced;
    const CalledActions actions([&] { shownWhenAnnounced = shown(); });
    EXPECT_FALSE(LaunchCommandForMessages({nullptr, messageAt(2)}, "archive", true))
        << "there is no host in this test";
    EXPECT_THAT(actions.names(), ElementsAre("archive c"));
    EXPECT_THAT(shownWhenAnnounced, ElementsAre("a", "b", "d", "e"));
    EXPECT_THAT(onDisk(), ElementsAre("a", "b", "d", "e"));
    EXPECT_EQ(table().numberOfRows(), 5U);
    mainQueue.runAll();
    EXPECT_EQ(table().numberOfRows(), 4U);
    EXPECT_EQ(table().selectedRow(), 2) << "the row above it has gone";
    EXPECT_EQ(height(), 300) << "until the next rebuild";
    update();
    EXPECT_THAT(shown(), ElementsAre("a", "b", "c", "d", "e")) << "the store still has it";
}

TEST_F(ActionTest, EveryDuplicateOfADeletedMessageLeavesTheLists) {
    Messages twice = *controller->dataFromDisk();
    twice.insert(twice.end(), {messageAt(0), messageAt(1)});
    controller->setDataFromDisk(std::make_shared<const Messages>(twice));
    LaunchCommandForMessages({messageAt(0)}, "delete", true);
    EXPECT_THAT(onDisk(), ElementsAre("b", "c", "d", "e", "b"));
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
    LaunchCommandForMessages({messageAt(0)}, "open", false);
    LaunchCommandForMessages({messageAt(0)}, "reply", false);
    LaunchCommandForMessages({unsendable}, "archive", true);
    LaunchCommandForMessages({stranger}, "delete", true);
    EXPECT_THAT(actions.names(), ElementsAre("open a", "reply a", "delete stranger"));
    mainQueue.runAll();
    EXPECT_EQ(table().numberOfRows(), 5U);
    EXPECT_EQ(onDisk().size(), 5U);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ActionTest, ARebuildBeforeTheSlideKeepsTheOtherRows) {
    controller->ReloadData();
    LaunchCommandForMessages({messageAt(1)}, "delete", true);
    mainQueue.runAll();
    EXPECT_THAT(shown(), ElementsAre("a", "c", "d", "e"));
    EXPECT_EQ(table().numberOfRows(), 4U);
    EXPECT_EQ(table().selectedRow(), 2) << "still the row of \"d\"";
    EXPECT_EQ(height(), 240);
}

TEST_F(ActionTest, TwoMessagesOfOneCommandBothSlideOutAndRowsOpenTheMessageThatTheyShow) {
    LaunchCommandForMessages({messageAt(1), messageAt(4)}, "archive", true);
    EXPECT_THAT(shown(), ElementsAre("a", "c", "d"));
    const CalledActions actions;
    controller->tableViewSelectionDidChange();  // the rows are still there
    EXPECT_THAT(actions.names(), ElementsAre("open d"));
    mainQueue.runAll();
    EXPECT_EQ(table().numberOfRows(), 3U);
}

}  // namespace
}  // namespace quillet::test
