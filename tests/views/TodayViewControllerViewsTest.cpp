// The view tree as the controller builds it.

#include <gtest/gtest.h>

#include "platform/ui/SegmentedControl.h"
#include "tests/views/WidgetWindow.h"

namespace quillet::test {
namespace {

TEST(TodayViewControllerViews, TreeHasItsMeasuresAndGrowsWithItsRows) {
    WidgetWindow widget;
    EXPECT_EQ(widget.controller->view()->size(), QSize(320, 85));
    EXPECT_EQ(widget.frame(widget.header()), QRect(0, 0, 320, 30));
    EXPECT_EQ(widget.frame(*widget.header().control()), QRect(40, 1, 260, 20));
    EXPECT_EQ(widget.frame(widget.table()), QRect(0, 35, 320, 50));
    for (const int rows : {3, 10, 0}) {
        SCOPED_TRACE(rows);
        widget.show(
            Messages(static_cast<std::size_t>(rows), makeMessage("Ada", "Engine", "09:41")));
        EXPECT_EQ(widget.controller->view()->size(), QSize(320, 35 + 60 * rows));
        EXPECT_EQ(widget.frame(widget.table()), QRect(0, 35, 320, 60 * rows));
    }
}

TEST(TodayViewControllerViews, ADismissedControllersViewIsHidden) {
    WidgetWindow widget;
    const WidgetWindow other;
    widget.controller->dismissViewController(*other.controller);
    EXPECT_TRUE(other.controller->view()->isHidden());
    EXPECT_FALSE(widget.controller->view()->isHidden());
}

TEST(TodayViewControllerViews, ViewsNeitherKeepTheirControllerAliveNorMissIt) {
    WidgetWindow widget;
    widget.show({makeMessage("Ada", "Engine", "09:41")});
    const std::weak_ptr<TodayViewController> weak = widget.controller;
    TodayTableView& table = widget.table();
    const TodayTableViewCell& cell = widget.cell(0);
    const platform::SegmentedControl& control = *widget.header().control();
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

}  // namespace
}  // namespace quillet::test
