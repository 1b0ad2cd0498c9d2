#include <QAccessible>
#include <QApplication>
#include <QScrollArea>
#include <gmock/gmock.h>

#include "platform/ui/Accessibility.h"
#include "tests/platform/ui/RecordingTable.h"

namespace quillet::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using enum Qt::Key;

class TableViewKeyboard : public testing::Test {
protected:
    // Presses keys where the focus is and returns where it is then: "before", "row 1",
    // "First of row 1", "after"; with a "!" for the mark of the current row.
    std::string press(std::initializer_list<Qt::Key> keys) {
        for (const Qt::Key key : keys) {
            QTest::keyClick(QApplication::focusWidget(), key);
        }
        const QWidget* focused = QApplication::focusWidget();
        if (focused == data_.before || focused == data_.after) {
            return focused == data_.before ? "before" : "after";
        }
        std::string place = "row " + std::to_string(data_.table->currentRow());
        if (data_.table->rowOfView(focused) == data_.table->currentRow()) {
            place = focused->accessibleName().toStdString() + " of " + place;
        }
        for (std::size_t i = 0; i < data_.table->numberOfRows(); ++i) {
            place += data_.table->rowViewAtRow(i)->hasKeyboardMark() ? "!" : "";
        }
        return place;
    }
    std::string place() { return press({}); }

    RecordingTable data_{{"a", "b", "c"}};
};

TEST_F(TableViewKeyboard, KeysMoveTheFocusAndPressWhatHasIt) {
    const struct {
        Qt::Key key;
        const char* place;
        const char* event = "";
    } steps[] = {
        {Key_Tab, "row 0!"},
        {Key_Up, "row 0!"},
        {Key_Return, "row 0!", "selected 0;"},
        {Key_Return, "row 0!"},
        {Key_Down, "row 1!"},
        {Key_Space, "row 1!", "selected 1;"},
        {Key_Tab, "First of row 1"},
        {Key_Return, "First of row 1", "first of b;"},
        {Key_Space, "First of row 1", "first of b;"},
        {Key_Tab, "Second of row 1"},
        {Key_Tab, "after"},
        {Key_Backtab, "Second of row 1"},
        {Key_Up, "Second of row 0"},
        {Key_Backtab, "First of row 0"},
        {Key_Backtab, "row 0!"},
        {Key_End, "row 2!"},
        {Key_Down, "row 2!"},
        {Key_Home, "row 0!"},
        {Key_Backtab, "before"},
    };
    data_.before->setFocus();
    for (const auto& step : steps) {
        SCOPED_TRACE(QKeySequence(step.key).toString().toStdString() + " to " + step.place);
        EXPECT_EQ(press({step.key}), step.place);
        EXPECT_EQ(data_.takeEvents(), step.event);
    }
    data_.table->setSelectedRow(2);                  // not the row that follows the removed one
    press({Key_Tab, Key_Tab, Key_Tab, Key_Return});  // removes the row
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, {}, {}, true);
    QCoreApplication::sendEvent(QApplication::focusWidget(), &repeated);
    EXPECT_EQ(data_.events, "second of a;") << "the key is still down";
}

TEST_F(TableViewKeyboard, TheFocusFollowsItsRowAndNoOtherRowsButtonGetsIt) {
    data_.table->setFocus(Qt::OtherFocusReason);
    data_.click({100, 20});
    EXPECT_EQ(place(), "row 0") << "a click leaves no mark";
    press({Key_Down, Key_Tab, Key_Tab});
    data_.table->reloadData();
    EXPECT_EQ(place(), "Second of row 1");
    EXPECT_EQ(press({Key_Return}), "row 1!") << "the row that took the place";
    data_.reload({"new", "a", "c"}, 1);
    EXPECT_EQ(place(), "row 2!");
    press({Key_Tab, Key_Tab});
    data_.reload({"c", "d"}, -2);
    EXPECT_EQ(place(), "Second of row 0");
    data_.reload({"d"}, -1);
    EXPECT_EQ(place(), "row 0!");
    data_.before->setFocus();
    data_.reload({"new", "d"}, 1);
    EXPECT_EQ(place(), "before");
    data_.reload({}, 0);
    EXPECT_EQ(press({Key_Tab}), "after") << "an empty table is no stop";
}

TEST_F(TableViewKeyboard, AScreenReaderIsToldOfRowsThatComeAndGoAndLastOfTheRowWithTheFocus) {
    std::vector<std::pair<QAccessible::Event, std::string>> told;
    platform::setScreenReaderObserver([&](QWidget* view, QAccessible::Event what) {
        const auto* row = QAccessible::queryAccessibleInterface(view);
        told.emplace_back(what, row->text(QAccessible::Name).toStdString());
    });
    const auto takeTold = [&] {
        QCoreApplication::processEvents();
        return std::exchange(told, {});
    };
    data_.before->setFocus();
    press({Key_Tab});
    EXPECT_THAT(told, IsEmpty()) << "the toolkit has yet to announce the table";
    EXPECT_THAT(takeTold(), ElementsAre(Pair(QAccessible::Focus, "a")));
    press({Key_Tab, Key_Tab});
    EXPECT_THAT(takeTold(), IsEmpty()) << "the toolkit announces the buttons";
    press({Key_Return});
    EXPECT_THAT(
        takeTold(),
        ElementsAre(Pair(QAccessible::ObjectDestroyed, "a"), Pair(QAccessible::Focus, "b")));
    data_.removeRow(0);
    EXPECT_THAT(
        takeTold(),
        ElementsAre(Pair(QAccessible::ObjectDestroyed, "b"), Pair(QAccessible::Focus, "c")));
    data_.reload({"new", "c"}, 1);
    EXPECT_THAT(takeTold(),
                ElementsAre(Pair(QAccessible::ObjectDestroyed, "c"),
                            Pair(QAccessible::ObjectCreated, ""),
                            Pair(QAccessible::ObjectCreated, ""),
                            Pair(QAccessible::Focus, "c")));
    data_.removeRow(0);
    EXPECT_THAT(takeTold(), ElementsAre(Pair(QAccessible::ObjectDestroyed, "new")))
        << "the focus has not moved";
    platform::setScreenReaderObserver(nullptr);
}

TEST_F(TableViewKeyboard, AScrollAreaFollowsTheKeyboard) {
    QScrollArea area;
    area.setWidget(&data_.window);
    area.resize(340, 100);
    area.show();
    area.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&area));
    const auto showsCurrentRow = [this] {
        const auto current = static_cast<std::size_t>(data_.table->currentRow());
        return data_.table->rowViewAtRow(current)->visibleRegion().boundingRect().height() == 60;
    };
    data_.before->setFocus();
    for (const Qt::Key key : {Key_Tab, Key_End, Key_Tab, Key_Up, Key_Up}) {
        press({key});
        EXPECT_TRUE(showsCurrentRow()) << place();
    }
    data_.reload({"new", "newer", "a", "b", "c"}, 2);
    EXPECT_TRUE(showsCurrentRow());
    area.takeWidget();
}

}  // namespace
}  // namespace quillet::test
