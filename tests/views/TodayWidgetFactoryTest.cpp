// The view tree as the controller builds it: header, table and rows.

#include <gtest/gtest.h>

#include "platform/ui/SegmentedControl.h"
#include "platform/ui/SlidingRow.h"
#include "tests/platform/ui/Rendering.h"
#include "tests/views/WidgetWindow.h"

namespace quillet::test {
namespace {

const Messages kThree{makeMessage("Ada", "Engine", "09:41"),
                      makeMessage("Grace", "Compiler", "09:40"),
                      makeMessage("Edsger", "Paths", "09:39")};

TEST(TodayWidgetFactory, TreeHasItsMeasuresAndGrowsWithItsRows) {
    WidgetWindow widget;
    EXPECT_EQ(widget.frame(widget.header()), QRect(0, 0, 320, 30));
    EXPECT_EQ(widget.frame(widget.control()), QRect(40, 1, 260, 20));
    EXPECT_EQ(widget.frame(widget.table()), QRect(0, 35, 320, 50));
    for (const int rows : {3, 10, 0}) {
        widget.show(Messages(static_cast<std::size_t>(rows), kThree[0]));
        EXPECT_EQ(widget.controller->view()->size(), QSize(320, 35 + 60 * rows));
        EXPECT_EQ(widget.frame(widget.table()), QRect(0, 35, 320, 60 * rows));
    }
}

TEST(TodayWidgetFactory, ViewsNeitherKeepTheirControllerAliveNorMissItAndADismissedOneIsHidden) {
    WidgetWindow widget;
    const WidgetWindow other;
    other.controller->dismissViewController(*widget.controller);
    EXPECT_TRUE(widget.controller->view()->isHidden());
    EXPECT_FALSE(other.controller->view()->isHidden());
    widget.controller->view()->show();
    widget.show(kThree);
    const std::weak_ptr<TodayViewController> weak = widget.controller;
    TodayTableView& table = widget.table();
    const TodayTableViewCell& cell = widget.cell(0);
    const platform::SegmentedControl& control = widget.control();
    widget.controller.reset();
    EXPECT_TRUE(weak.expired());
    widget.click(control, control.segmentRect(1).center());
    widget.click(*cell.replyButton());
    widget.click(table, {100, 20});
    EXPECT_EQ(table.selectedRow(), 0);
    widget.window.grab();
    table.reloadData();
    EXPECT_EQ(table.numberOfRows(), 0U);
}

TEST(TodayTableView, ArchivedRowSlidesOutToTheLeftAndADeletedOneToTheRight) {
    for (const bool archives : {true, false}) {
        SCOPED_TRACE(archives);
        WidgetWindow widget;
        widget.show(kThree);
        const TodayTableViewCell& cell = widget.cell(1);
        widget.click(archives ? *cell.archiveButton() : *cell.trashButton());
        ASSERT_EQ(widget.mainQueue.blocks.size(), 1U);
        widget.mainQueue.blocks.front()();
        runningAnimation()->setCurrentTime(125);
        const int left = widget.table().findChild<platform::SlidingRow*>()->x();
        EXPECT_NEAR(left, archives ? -160 : 160, 20);
        EXPECT_EQ(widget.cell(1).message()->from(), "Edsger");
        EXPECT_EQ(widget.table().height(), 180) << "until the next rebuild";
    }
}

TEST(TodayTableRowView, SelectedRowAloneIsHighlightedInBothLooks) {
    for (const bool dark : {false, true}) {
        SCOPED_TRACE(dark ? "dark" : "light");
        WidgetWindow widget(dark);
        widget.show(kThree);
        widget.table().setSelectedRow(1);
        const QImage table = widget.picture(widget.table());
        const QColor ground = dark ? Qt::black : Qt::white;
        EXPECT_EQ(table.pixelColor(160, 55), ground);
        EXPECT_EQ(table.pixelColor(160, 175), ground);
        if (dark) {
            EXPECT_NE(table.pixelColor(160, 115), ground);
        } else {
            EXPECT_NEAR(table.pixelColor(160, 115).red(), 255 - 0.3 * 255 / 3, 1);
        }
    }
}

TEST(TodayHeaderView, StoredSegmentBeyondTheThreeShowsInbox) {
    WidgetWindow widget;
    EXPECT_EQ(widget.control().accessibleName(), QStringLiteral("Folder"));
    for (const auto& [stored, shown] :
         {std::pair<std::int64_t, std::size_t>{0, 0}, {1, 0}, {2, 1}, {3, 2}, {4, 0}, {-1, 0}}) {
        widget.defaults.setInteger(stored, "segmented");
        const TodayHeaderView header(widget.controller);
        EXPECT_EQ(header.control()->selectedSegment(), shown) << stored;
        EXPECT_EQ(widget.defaults.integerForKey("segmented"), stored);
    }
    EXPECT_TRUE(widget.mainQueue.blocks.empty()) << "building the header told the delegate";
}

TEST(TodayHeaderView, ChoiceIsStoredBeforeTheDelegateIsTold) {
    // Notes what is stored when the delegate asks for its first rebuild.
    struct WatchingQueue final : platform::Queue {
        explicit WatchingQueue(const platform::UserDefaults& watched) : defaults(watched) {}
        void async(Block /*block*/) override {
            seen.push_back(defaults.integerForKey("segmented"));
        }
        const platform::UserDefaults& defaults;
        std::vector<std::int64_t> seen;
    };
    WidgetWindow widget;
    WatchingQueue queue(widget.defaults);
    const auto delegate = TodayViewController::make(
        {queue, widget.backgroundQueue, widget.defaults, TodayWidgetFactory::shared()});
    widget.header().setDelegate(delegate);
    const auto click = [&](std::size_t segment) {
        widget.click(widget.control(), widget.control().segmentRect(segment).center());
    };
    for (const std::size_t segment : {0U, 0U, 2U, 1U, 0U}) {  // at first "Inbox" is not stored
        click(segment);
    }
    widget.header().setDelegate(nullptr);
    click(1);
    EXPECT_EQ(widget.defaults.integerForKey("segmented"), 2) << "not stored without a delegate";
    EXPECT_EQ(queue.seen, (std::vector<std::int64_t>{1, 1, 3, 2, 1}));
}

}  // namespace
}  // namespace quillet::test
