#include <QAccessible>
#include <gmock/gmock.h>

#include "platform/presentation/AnimationContext.h"
#include "platform/ui/SlidingRow.h"
#include "tests/platform/ui/RecordingTable.h"

namespace quillet::test {
namespace {

using platform::Table;

TEST(TableView, RowsLieBelowEachOtherAndCellsAreReused) {
    RecordingTable data({"a", "b", "c"});
    EXPECT_EQ(data.table->rowViewAtRow(2)->geometry(), QRect(0, 120, 320, 60));
    data.reload({"d", "e"}, 0);
    EXPECT_EQ(data.shown(), "d 0;e 60;");
    data.reload({"f", "g", "h", "i"}, 0);
    EXPECT_EQ(data.table->findChildren<platform::TableCellView*>().size(), 4);
    EXPECT_EQ(data.table->reusableCell("cell"), nullptr) << "all are in use";
    data.removeRow(1);
    EXPECT_NE(data.table->reusableCell("cell"), nullptr);
    EXPECT_EQ(data.table->cellAtRow(3), nullptr);
}

TEST(TableView, OnlyAWholeClickOnAnotherRowSelects) {
    RecordingTable data({"a", "b", "c"});
    data.press({100, 20});
    data.release({100, 80});
    EXPECT_EQ(data.click({100, 300}), "") << "below the last row";
    QTest::mouseClick(data.window.windowHandle(), Qt::RightButton, {}, {100, 40});
    data.press({262, 40});  // a button, taken back
    data.release({100, 40});
    for (const QPoint place : {QPoint(100, 20), QPoint(262, 40)}) {
        data.press(place);
        data.table->reloadData();  // the row, or the button's, is another one now
        data.release(place);
        data.pass(200);
    }
    EXPECT_EQ(data.events, "");
    data.press({262, 40});
    data.reload(data.rows, 0);
    data.release({262, 40});
    EXPECT_EQ(data.takeEvents(), "first of a;");
    EXPECT_EQ(data.click({100, 75}), "selected 1;") << "on the text";
    EXPECT_EQ(data.click({5, 115}), "") << "beside everything, on the same row";
    data.click({100, 20});
    EXPECT_FALSE(data.table->rowViewAtRow(1)->isSelected());
}

TEST(TableView, TheSelectionStaysWithItsRow) {
    RecordingTable data({"a", "b", "c", "d"});
    data.table->setSelectedRow(2);
    data.removeRow(3);
    EXPECT_EQ(data.table->selectedRow(), 2);
    data.removeRow(0);
    data.table->reloadData();
    EXPECT_EQ(data.table->selectedRow(), 1);
    EXPECT_TRUE(data.table->rowViewAtRow(1)->isSelected());
    data.removeRow(1);
    EXPECT_EQ(data.table->selectedRow(), Table::kNoRow);
    EXPECT_EQ(data.events, "") << "the user did nothing";
}

TEST(TableView, ARemovedRowSlidesOutWhileTheRowsBelowMoveUpAsLongAsTheyKeepTheirPlaces) {
    RecordingTable data({"a", "b", "c"});
    data.removeRow(1);
    EXPECT_EQ(data.shown(), "a 0;c 120;");
    data.pass(125);
    const auto* leaving = data.table->findChild<platform::SlidingRow*>();
    EXPECT_NEAR(leaving->x(), 160, 2);
    data.reload({"a", "c", "d"}, 0);
    EXPECT_EQ(data.shown(), "a 0;c 90;d 150;");
    data.removeRow(0);
    EXPECT_EQ(data.shown(), "c 60;d 120;") << "the first removal has ended";
    EXPECT_FALSE(leaving->isVisible());
    data.pass(250);
    EXPECT_EQ(data.shown(), "c 0;d 60;");
    EXPECT_FALSE(data.table->isAnimating());
    data.removeRow(0);
    data.reload({"new", "d"}, 1);
    EXPECT_EQ(data.shown(), "new 0;d 60;");
    data.removeRow(0);
    data.table->reloadData();
    EXPECT_FALSE(data.table->isAnimating()) << "any row may show something else";
    data.table->hide();
    data.removeRow(0);
    EXPECT_FALSE(data.table->isAnimating()) << "nobody sees it";
}

TEST(TableView, APressActsOnlyOnARowThatStandsStill) {
    const struct {
        const char* name;
        bool slides;
        int later;  // milliseconds after the second row was removed by its button
        QPoint place;
        const char* event;
    } cases[] = {
        {"button that moves", true, 180, {290, 100}, ""},
        {"row that moves", true, 220, {100, 100}, ""},
        {"row that is drawn at its place", true, 240, {100, 100}, "selected 1;"},
        {"row above those that move", true, 60, {100, 40}, "selected 0;"},
        {"button that came to rest", true, 250, {290, 100}, "second of c;"},
        {"row that jumped", false, 199, {100, 100}, ""},
        {"row above those that jumped", false, 60, {100, 40}, "selected 0;"},
        {"button that jumped long ago", false, 200, {290, 100}, "second of c;"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        platform::AnimationContext::setEnabled(row.slides);
        RecordingTable data({"a", "b", "c", "d"});
        EXPECT_EQ(data.click({290, 100}), "second of b;");
        data.pass(row.later);
        EXPECT_EQ(data.click(row.place), row.event);
    }
    platform::AnimationContext::setEnabled(true);
    RecordingTable data({"a", "b", "c"});
    QTest::mouseDClick(data.window.windowHandle(), Qt::LeftButton, {}, {290, 120});
    EXPECT_EQ(data.events, "second of b;");
}

TEST(TableView, APressWaitsForWhatCameToItsPlaceAndForNothingElse) {
    constexpr QPoint kFirst(262, 40);
    constexpr QPoint kSecond(262, 100);
    RecordingTable data({"a", "b", "c", "d"});
    data.rows = {"a", "new", "b"};
    data.table->reloadData([](std::size_t row) { return row == 0 ? 0 : Table::kNoRow; });
    data.pass(199);
    EXPECT_EQ(data.click(kFirst), "first of a;");
    EXPECT_EQ(data.click(kSecond), "");
    data.pass(1);
    EXPECT_EQ(data.click(kSecond), "first of new;");
    data.removeRow(0);
    data.pass(210);
    data.removeRow(1);  // the row above has jumped to its end
    EXPECT_EQ(data.click(kFirst), "");
    data.pass(200);
    EXPECT_EQ(data.click(kFirst), "first of new;");
    data.window.hide();
    data.window.show();
    EXPECT_EQ(data.click(kFirst), "");
}

TEST(TableView, HasNoBackgroundAndNoSeamsBetweenSelectedRows) {
    RecordingTable data({"", ""});
    data.table->rowViewAtRow(0)->setSelected(true);
    data.table->rowViewAtRow(1)->setSelected(true);
    for (const double ratio : kDevicePixelRatios) {
        const QImage image = rendering(*data.table, ratio);
        const int rows = static_cast<int>(120 * ratio);
        EXPECT_EQ(image.pixelColor(0, rows).alpha(), 0) << ratio;
        for (int y = 1; y < rows; ++y) {
            ASSERT_EQ(image.pixelColor(0, y), image.pixelColor(0, 0)) << y << " at " << ratio;
        }
    }
}

TEST(TableView, AScreenReaderSeesAListOfRowsWithTheirButtons) {
    RecordingTable data({"Ann", "Bob"});
    data.table->setSelectedRow(1);
    data.table->setFocus(Qt::TabFocusReason);
    QAccessibleInterface* list = QAccessible::queryAccessibleInterface(data.table);
    EXPECT_EQ(list->role(), QAccessible::List);
    ASSERT_EQ(list->childCount(), 2);
    EXPECT_EQ(list->focusChild(), list->child(1));
    EXPECT_TRUE(list->child(1)->state().selected);
    QAccessibleInterface* row = list->child(0);
    EXPECT_FALSE(row->state().selected);
    EXPECT_EQ(row->role(), QAccessible::ListItem);
    EXPECT_EQ(row->text(QAccessible::Name), QStringLiteral("Ann"));
    ASSERT_EQ(row->childCount(), 2);
    QAccessibleInterface* button = row->child(1);
    EXPECT_EQ(button->role(), QAccessible::Button);
    EXPECT_EQ(button->text(QAccessible::Name), QStringLiteral("Second"));
    EXPECT_EQ(button->parent(), row);
    for (QAccessibleInterface* pressed : {row, row->child(0), button}) {
        pressed->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    }
    EXPECT_EQ(data.events, "selected 0;first of Ann;second of Ann;");
}

}  // namespace
}  // namespace quillet::test
