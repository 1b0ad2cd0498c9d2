#include <gtest/gtest.h>

#include "platform/ui/SlidingRow.h"
#include "tests/platform/presentation/RunningAnimation.h"
#include "tests/views/WidgetWindow.h"
#include "views/TodayTableView.h"

namespace quillet::test {
namespace {

Messages threeMessages() {
    return {makeMessage("Ada", "Engine", "09:41"),
            makeMessage("Grace", "Compiler", "09:40"),
            makeMessage("Edsger", "Paths", "09:39")};
}

TEST(TodayTableView, ArchivedRowSlidesOutToTheLeftAndADeletedOneToTheRight) {
    for (const bool archives : {true, false}) {
        SCOPED_TRACE(archives);
        WidgetWindow widget;
        widget.show(threeMessages());
        const TodayTableViewCell& cell = widget.cell(1);
        widget.click(archives ? *cell.archiveButton() : *cell.trashButton());
        ASSERT_EQ(widget.mainQueue.blocks.size(), 1U);
        widget.mainQueue.blocks.front()();
        ASSERT_NE(runningAnimation(), nullptr);
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
        widget.show(threeMessages());
        widget.table().setSelectedRow(1);
        const QImage table = widget.picture(widget.table());
        const QColor ground = dark ? Qt::black : Qt::white;
        EXPECT_EQ(table.pixelColor(160, 55), ground);
        EXPECT_NE(table.pixelColor(160, 115), ground);
        EXPECT_EQ(table.pixelColor(160, 175), ground);
        if (!dark) {
            EXPECT_NEAR(table.pixelColor(160, 115).red(), 255 - 0.3 * 255 / 3, 1);
        }
    }
}

}  // namespace
}  // namespace quillet::test
