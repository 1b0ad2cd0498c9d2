#include <QApplication>
#include <QPainter>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/ui/SegmentedControl.h"
#include "tests/support/LogCapture.h"
#include "tests/views/WidgetWindow.h"
#include "views/TodayTableRowView.h"
#include "views/TodayTableView.h"

namespace quillet::test {
namespace {

Messages threeMessages() {
    return {makeMessage("Ada", "Engine", "09:41"),
            makeMessage("Grace", "Compiler", "09:40"),
            makeMessage("Edsger", "Paths", "09:39")};
}

TEST(TodayTableView, ClickOnARowOpensItsMessageOnceAndLeavesItSelected) {
    WidgetWindow widget;
    widget.show(threeMessages());
    const LogCapture log;
    widget.click(widget.cell(1), QPoint(20, 55));
    widget.click(*widget.cell(1).subjectField());
    EXPECT_THAT(log.lines(),
                testing::ElementsAre("LaunchCommandForMessages open me@example.org GraceCompiler "
                                     "in the foreground"));
    EXPECT_EQ(widget.table().selectedRow(), 1);
    EXPECT_EQ(widget.table().swipeOnRowIndex(), -1);
}

TEST(TodayTableView, TabGoesFromTheSegmentsThroughTheRowToItsButtons) {
    WidgetWindow widget;
    widget.show(threeMessages());
    widget.window.activateWindow();
    widget.header().control()->setFocus();
    const TodayTableViewCell& cell = widget.cell(0);
    for (const QWidget* next : std::initializer_list<const QWidget*>{
             &widget.table(), cell.replyButton(), cell.archiveButton(), cell.trashButton()}) {
        QTest::keyClick(widget.window.windowHandle(), Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), next);
    }
}

TEST(TodayTableRowView, LightSelectionIsLightGrayOverTheRectangleAlone) {
    const WidgetWindow widget;
    TodayTableRowView row(QRect(0, 0, 320, 0), widget.controller);
    QImage canvas(20, 20, QImage::Format_RGB32);
    canvas.fill(Qt::white);
    QPainter painter(&canvas);
    row.drawSelection(painter, QRect(5, 5, 10, 10));
    painter.end();
    const double expected = 255 - 0.3 * 255 / 3;
    EXPECT_NEAR(canvas.pixelColor(5, 5).red(), expected, 1);
    EXPECT_NEAR(canvas.pixelColor(14, 14).red(), expected, 1);
    EXPECT_EQ(canvas.pixelColor(4, 5), QColor(Qt::white));
    EXPECT_EQ(canvas.pixelColor(15, 14), QColor(Qt::white));
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
    }
}

}  // namespace
}  // namespace quillet::test
