#include <gmock/gmock.h>

#include "tests/support/CalledActions.h"
#include "tests/support/PropertyLists.h"
#include "tests/widget/StoreFixture.h"
#include "widget/TodayViewController.h"

namespace quillet::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TodayViewControllerTest : public StoreFixture {};

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
    EXPECT_THAT(identifiersOf(controller->dataFromDisk()), ElementsAre("n", "m"));
    EXPECT_EQ(controller->dataToShow(), nullptr);  // the rebuild waits for its turn
    mainQueue.runAll();
    EXPECT_THAT(shown(), ElementsAre("n", "m"));
}

TEST_F(TodayViewControllerTest, FirstReadThatFindsNothingLeavesTheTableAtItsFirstHeight) {
    controller->view();
    controller->viewWillAppear();
    mainQueue.runAll();
    EXPECT_EQ(controller->dataToShow(), nullptr);
    EXPECT_EQ(controller->viewHeightContraint()->constant(), 50);
    EXPECT_EQ(update(), NCUpdateResultNewData);
    EXPECT_EQ(controller->viewHeightContraint()->constant(), 0);
}

TEST_F(TodayViewControllerTest, SegmentChangeFiltersAtOnceAndRereadsInTheBackground) {
    writeFile("a@x",
              "1.plist",
              fileXml(messageXml("i", 3000) + messageXml("t", 2000, 11) + messageXml("j", 1000)));
    controller->view();
    controller->viewWillAppear();
    EXPECT_EQ(controller->myTableView()->numberOfRows(), 0U);
    mainQueue.runAll();
    EXPECT_EQ(controller->myTableView()->numberOfRows(), 3U);
    EXPECT_EQ(controller->viewHeightContraint()->constant(), 180);
    defaults.setInteger(2, "segmented");
    writeFile("a@x", "2.plist", fileXml(messageXml("u", 4000, 11)));
    controller->selectedSegment(nullptr);
    mainQueue.runAll();
    EXPECT_EQ(controller->myTableView()->numberOfRows(), 1U);
    EXPECT_EQ(controller->viewHeightContraint()->constant(), 60);
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

TEST_F(TodayViewControllerTest, SelectionStaysWithItsMessage) {
    writeFile("a@x", "1.plist", fileXml(messageXml("old", 1000) + messageXml("older", 500)));
    controller->view();
    update();
    platform::Table& table = *controller->myTableView();
    table.setSelectedRow(0);
    writeFile("a@x", "2.plist", fileXml(messageXml("new", 2000)));
    update();
    EXPECT_EQ(table.selectedRow(), 1);
    writeFile("a@x", "1.plist", fileXml(messageXml("older", 500)));
    update();
    EXPECT_EQ(table.selectedRow(), platform::Table::kNoRow);
}

TEST_F(TodayViewControllerTest, SelectionBeyondTheListSendsNothing) {
    writeFile("a@x", "1.plist", fileXml(messageXml("m", 1)));
    controller->view();
    update();
    const CalledActions actions;
    controller->tableViewSelectionDidChange();
    controller->myTableView()->setSelectedRow(0);
    controller->setDataToShow(nullptr);
    controller->tableViewSelectionDidChange();
    EXPECT_THAT(actions.names(), IsEmpty());
    mainQueue.runAll();
    controller->rebuildList();
    controller->myTableView()->setSelectedRow(0);
    controller->tableViewSelectionDidChange();
    EXPECT_THAT(actions.names(), ElementsAre("open m"));
}

TEST_F(TodayViewControllerTest, AnswersToTheNotificationCentre) {
    EXPECT_EQ(controller->widgetMarginInsetsForProposedMarginInsets({10, 20, 30, 40}),
              (EdgeInsets{10, 0, 30, 40}));
    EXPECT_FALSE(controller->widgetAllowsEditing());
}

}  // namespace quillet::test
