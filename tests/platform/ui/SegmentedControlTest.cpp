#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <array>
#include <gmock/gmock.h>

#include "platform/ui/SegmentedControl.h"
#include "tests/platform/presentation/RunningAnimation.h"
#include "tests/platform/ui/Rendering.h"

namespace quillet::test {
namespace {

using testing::ElementsAre;

class SegmentedControlTest : public testing::Test {
protected:
    SegmentedControlTest() {
        control_.setSegmentCount(3);
        for (std::size_t i = 0; i < 3; ++i) {
            control_.setLabel(std::array{"Inbox", "To Do", "Memo"}.at(i), i);
        }
        control_.setAction([this] { chosen_.push_back(control_.selectedSegment()); });
        control_.setGeometry(40, 1, 260, 20);
        window_.resize(320, 30);
        window_.show();
        window_.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
        control_.setFocus(Qt::ActiveWindowFocusReason);
    }

    // Presses the mouse on one segment and releases it on another.
    void drag(std::size_t from, std::size_t to, Qt::MouseButton button = Qt::LeftButton) {
        const auto middle = [this](std::size_t segment) {
            return control_.segmentRect(segment).center() + control_.pos();
        };
        QTest::mousePress(window_.windowHandle(), button, {}, middle(from));
        QTest::mouseRelease(window_.windowHandle(), button, {}, middle(to));
    }
    void keys(std::initializer_list<Qt::Key> pressed) {
        for (const Qt::Key key : pressed) {
            QTest::keyClick(QApplication::focusWidget(), key);
        }
    }
    QImage picture() { return rendering(control_, 1); }

    QWidget window_;
    platform::SegmentedControl control_{&window_};
    std::vector<std::size_t> chosen_;
};

TEST_F(SegmentedControlTest, AClickChoosesASegmentAlsoTheSelectedOne) {
    drag(2, 2);
    drag(2, 2);
    drag(1, 0);
    drag(1, 2);  // back to the selected segment
    drag(1, 1, Qt::RightButton);
    control_.setSelectedSegment(1);
    control_.setSelectedSegment(3);
    EXPECT_THAT(chosen_, ElementsAre(2U, 2U, 2U));
    EXPECT_EQ(control_.selectedSegment(), 1U);
}

TEST_F(SegmentedControlTest, ArrowsAndClicksFollowWhatTheEyeSees) {
    using enum Qt::Key;
    EXPECT_EQ(control_.segmentRect(0), QRect(0, 0, 87, 20));
    EXPECT_EQ(control_.segmentRect(1), QRect(87, 0, 86, 20));
    keys({Key_Right, Key_Right, Key_Right, Key_Left, Key_Home, Key_Home, Key_End, Key_End});
    EXPECT_THAT(chosen_, ElementsAre(1U, 2U, 1U, 0U, 2U));
    chosen_.clear();
    keys({Key_Up, Key_Up, Key_Up, Key_Down, Key_Space, Key_Return});
    EXPECT_THAT(chosen_, ElementsAre(1U, 0U, 1U, 1U, 1U));
    chosen_.clear();
    window_.setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(control_.segmentRect(0), QRect(173, 0, 87, 20));
    keys({Key_Right, Key_Right, Key_Left});
    drag(2, 2);
    EXPECT_THAT(chosen_, ElementsAre(0U, 1U, 2U));
}

TEST_F(SegmentedControlTest, TheFocusRingWaitsForTheKeyboard) {
    EXPECT_TRUE(control_.hasFocus());
    const QImage focused = picture();
    keys({Qt::Key_Home});
    EXPECT_NE(picture(), focused);
    control_.clearFocus();
    EXPECT_EQ(picture(), focused);
}

TEST_F(SegmentedControlTest, ThePlateSlidesToTheChosenSegment) {
    const auto isPlate = [this](std::size_t segment) {
        const QPoint place = control_.segmentRect(segment).topLeft() + QPoint(10, 4);
        return picture().pixelColor(place) == QColor(Qt::white);
    };
    drag(2, 2);
    runningAnimation()->pause();
    for (const std::size_t segment : {0U, 1U, 2U}) {
        runningAnimation()->setCurrentTime(static_cast<int>(segment) * 124);
        EXPECT_TRUE(isPlate(segment));
    }
    control_.setSelectedSegment(0);
    EXPECT_TRUE(isPlate(0)) << "the program's own choice jumps";
}

TEST_F(SegmentedControlTest, AScreenReaderSeesRadioButtons) {
    QAccessibleInterface* group = QAccessible::queryAccessibleInterface(&control_);
    ASSERT_EQ(group->childCount(), 3);
    QAccessibleInterface* second = group->child(1);
    EXPECT_EQ(group->role(), QAccessible::Grouping);
    EXPECT_EQ(second->role(), QAccessible::RadioButton);
    EXPECT_EQ(second->text(QAccessible::Name), QStringLiteral("To Do"));
    EXPECT_TRUE(group->child(0)->state().checked);
    EXPECT_FALSE(second->state().checked);
    EXPECT_TRUE(second->state().focusable);
    EXPECT_EQ(second->rect(), QRect(control_.mapToGlobal(QPoint(87, 0)), QSize(86, 20)));
    second->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    second->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_THAT(chosen_, ElementsAre(1U, 1U));
    EXPECT_EQ(group->focusChild(), second);
    control_.setSegmentCount(1);
    EXPECT_EQ(group->childCount(), 1);
}

}  // namespace
}  // namespace quillet::test
