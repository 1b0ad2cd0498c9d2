#include <QAccessible>
#include <QApplication>
#include <QScrollArea>
#include <gmock/gmock.h>
#include <map>

#include "platform/ui/Accessibility.h"
#include "tests/platform/ui/RecordingTable.h"

namespace quillet::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TableViewKeyboard : public testing::Test {
protected:
    // Where the keyboard focus is: "before", "row 1", "first of row 1", "behind".
    std::string place() {
        QWidget* focused = QApplication::focusWidget();
        if (focused == data_.before || focused == data_.behind) {
            return focused == data_.before ? "before" : "behind";
        }
        const std::string row = "row " + std::to_string(data_.table->currentRow());
        if (focused == data_.table) {
            return row;
        }
        const std::ptrdiff_t holder = data_.table->rowOfView(focused);
        return focused == nullptr || holder != data_.table->currentRow()
                   ? "astray"
                   : focused->accessibleName().toStdString() + " of " + row;
    }

    // The places that pressing a key again and again leads to.
    std::vector<std::string> places(Qt::Key key, int times, Qt::KeyboardModifiers modifiers = {}) {
        std::vector<std::string> visited;
        for (int i = 0; i < times; ++i) {
            QTest::keyClick(QApplication::focusWidget(), key, modifiers);
            visited.push_back(place());
        }
        return visited;
    }

    int marks() const {
        int count = 0;
        for (std::size_t i = 0; i < data_.table->numberOfRows(); ++i) {
            count += data_.table->rowViewAtRow(i)->hasKeyboardMark() ? 1 : 0;
        }
        return count;
    }

    RecordingTable data_{{"a", "b", "c"}};
};

TEST_F(TableViewKeyboard, TabGoesThroughTheCurrentRowAndBack) {
    data_.before->setFocus();
    EXPECT_THAT(places(Qt::Key_Tab, 1), ElementsAre("row 0"));
    EXPECT_THAT(places(Qt::Key_Down, 1), ElementsAre("row 1"));
    EXPECT_THAT(places(Qt::Key_Tab, 3), ElementsAre("First of row 1", "Second of row 1", "behind"));
    EXPECT_THAT(places(Qt::Key_Backtab, 4, Qt::ShiftModifier),
                ElementsAre("Second of row 1", "First of row 1", "row 1", "before"));
}

TEST_F(TableViewKeyboard, ArrowsMoveTheCurrentRowAndStopAtTheEnds) {
    data_.table->setFocus(Qt::TabFocusReason);
    EXPECT_THAT(places(Qt::Key_Down, 3), ElementsAre("row 1", "row 2", "row 2"));
    EXPECT_THAT(places(Qt::Key_Home, 1), ElementsAre("row 0"));
    EXPECT_THAT(places(Qt::Key_Up, 1), ElementsAre("row 0"));
    EXPECT_THAT(places(Qt::Key_End, 1), ElementsAre("row 2"));
    EXPECT_THAT(places(Qt::Key_Tab, 2), ElementsAre("First of row 2", "Second of row 2"));
    EXPECT_THAT(places(Qt::Key_Up, 1), ElementsAre("Second of row 1"));
    EXPECT_THAT(data_.takeEvents(), IsEmpty());
}

TEST_F(TableViewKeyboard, ReturnAndSpaceSelectTheCurrentRowOrPressTheButton) {
    data_.table->setFocus(Qt::TabFocusReason);
    for (const Qt::Key key : {Qt::Key_Return,
                              Qt::Key_Return,
                              Qt::Key_Down,
                              Qt::Key_Space,
                              Qt::Key_Tab,
                              Qt::Key_Return,
                              Qt::Key_Space}) {
        QTest::keyClick(QApplication::focusWidget(), key);
    }
    EXPECT_THAT(data_.takeEvents(),
                ElementsAre("selected 0", "selected 1", "first of b", "first of b"));
    places(Qt::Key_Tab, 1);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);  // removes the row
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, {}, {}, true);
    QCoreApplication::sendEvent(QApplication::focusWidget(), &repeated);
    EXPECT_THAT(data_.takeEvents(), ElementsAre("second of b")) << "the key is still down";
}

TEST_F(TableViewKeyboard, TheMarkIsShownToThoseWhoUseTheKeyboard) {
    data_.click({100, 80});
    EXPECT_EQ(marks(), 0);
    EXPECT_THAT(places(Qt::Key_Down, 1), ElementsAre("row 2")) << "from the row that was clicked";
    EXPECT_EQ(marks(), 1);
    QTest::keyClick(data_.table, Qt::Key_Tab);
    EXPECT_EQ(marks(), 0) << "the button shows it";
}

TEST_F(TableViewKeyboard, TheFocusSurvivesAReloadAndARemoval) {
    data_.table->setFocus(Qt::TabFocusReason);
    places(Qt::Key_Down, 1);
    places(Qt::Key_Tab, 2);
    data_.table->reloadData();
    EXPECT_EQ(place(), "Second of row 1");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(place(), "row 1") << "the row that took the place";
    data_.rows = {"a"};
    data_.table->reloadData();
    EXPECT_EQ(place(), "row 0");
    data_.removeRow(0);
    data_.before->setFocus();
    EXPECT_THAT(places(Qt::Key_Tab, 1), ElementsAre("behind")) << "an empty table is no stop";
}

TEST_F(TableViewKeyboard, TheFocusFollowsItsRowThroughAReloadAndNoOtherRowsButtonGetsIt) {
    const auto reload = [this](std::vector<std::string> rows, std::ptrdiff_t moved) {
        data_.rows = std::move(rows);
        data_.table->reloadData(
            [moved](std::size_t row) { return static_cast<std::ptrdiff_t>(row) + moved; });
    };
    data_.table->setFocus(Qt::TabFocusReason);
    places(Qt::Key_Down, 1);
    reload({"new", "a", "b", "c"}, 1);
    EXPECT_EQ(place(), "row 2");
    places(Qt::Key_Tab, 2);
    reload({"b", "c"}, -2);
    EXPECT_EQ(place(), "Second of row 0");
    reload({"c"}, -1);
    EXPECT_EQ(place(), "row 0");
    data_.before->setFocus();
    reload({"new", "c"}, 1);
    EXPECT_EQ(place(), "before");
}

TEST_F(TableViewKeyboard, AScreenReaderIsToldOfRowsThatComeAndGoAndLastOfTheRowWithTheFocus) {
    std::vector<std::string> told;
    platform::setScreenReaderObserver([&](QWidget* view, QAccessible::Event what) {
        const std::map<QAccessible::Event, std::string> words{
            {QAccessible::Focus, "focus "},
            {QAccessible::ObjectCreated, "come "},
            {QAccessible::ObjectDestroyed, "gone "}};
        const QAccessibleInterface* row = QAccessible::queryAccessibleInterface(view);
        told.push_back(words.at(what) + row->text(QAccessible::Name).toStdString());
    });
    const auto takeTold = [&] {
        QCoreApplication::processEvents();
        return std::exchange(told, {});
    };
    data_.before->setFocus();
    places(Qt::Key_Tab, 1);
    EXPECT_THAT(told, IsEmpty()) << "the toolkit has yet to announce the table";
    EXPECT_THAT(takeTold(), ElementsAre("focus a"));
    places(Qt::Key_Tab, 2);
    EXPECT_THAT(takeTold(), IsEmpty()) << "the buttons are the toolkit's to announce";
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_THAT(takeTold(), ElementsAre("gone a", "focus b"));
    data_.removeRow(0);
    EXPECT_THAT(takeTold(), ElementsAre("gone b", "focus c"));
    data_.rows = {"new", "c"};
    data_.table->reloadData([](std::size_t row) { return static_cast<std::ptrdiff_t>(row) + 1; });
    EXPECT_THAT(takeTold(), ElementsAre("gone c", "come ", "come ", "focus c"));
    data_.removeRow(0);
    EXPECT_THAT(takeTold(), ElementsAre("gone new")) << "the focus has not moved";
    platform::setScreenReaderObserver(nullptr);
}

TEST_F(TableViewKeyboard, AScrollAreaFollowsTheKeyboard) {
    QScrollArea area;
    area.setWidget(&data_.window);
    area.resize(340, 100);
    area.show();
    area.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&area));
    const auto inSight = [this] {
        const QWidget* row =
            data_.table->rowViewAtRow(static_cast<std::size_t>(data_.table->currentRow()));
        return row->visibleRegion().boundingRect().size() == row->size();
    };
    data_.before->setFocus();
    places(Qt::Key_Tab, 1);
    EXPECT_TRUE(inSight());
    places(Qt::Key_End, 1);
    EXPECT_TRUE(inSight());
    places(Qt::Key_Tab, 1);
    places(Qt::Key_Up, 2);
    EXPECT_TRUE(inSight());
    data_.rows = {"new", "newer", "a", "b", "c"};
    data_.table->reloadData([](std::size_t row) { return static_cast<std::ptrdiff_t>(row) + 2; });
    EXPECT_TRUE(inSight());
    area.takeWidget();
}

}  // namespace
}  // namespace quillet::test
