#include <QAccessible>
#include <QTest>
#include <gmock/gmock.h>

#include "platform/ui/SegmentedControl.h"
#include "tests/platform/presentation/RunningAnimation.h"
#include "tests/platform/ui/Rendering.h"

namespace quillet::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SegmentedControlTest : public testing::Test {
protected:
    SegmentedControlTest() {
        control_.setSegmentCount(3);
        control_.setLabel("Inbox", 0);
        control_.setLabel("To Do", 1);
        control_.setLabel("Memo", 2);
        control_.setAction([this] { chosen_.push_back(control_.selectedSegment()); });
        control_.setGeometry(40, 1, 260, 20);
        window_.resize(320, 30);
        window_.show();
    }

    QPoint middle(std::size_t segment) const {
        return control_.segmentRect(segment).center() + control_.pos();
    }
    void press(std::size_t segment) {
        QTest::mousePress(window_.windowHandle(), Qt::LeftButton, {}, middle(segment));
    }
    void release(std::size_t segment) {
        QTest::mouseRelease(window_.windowHandle(), Qt::LeftButton, {}, middle(segment));
    }
    void click(std::size_t segment) {
        press(segment);
        release(segment);
    }
    std::vector<std::size_t> takeChosen() { return std::exchange(chosen_, {}); }

    QWidget window_;
    platform::SegmentedControl control_{&window_};
    std::vector<std::size_t> chosen_;
};

TEST_F(SegmentedControlTest, AClickChoosesASegmentAlsoTheSelectedOne) {
    click(2);
    click(2);
    press(1);
    release(0);
    press(1);
    release(2);  // dragged back
    QTest::mouseClick(window_.windowHandle(), Qt::RightButton, {}, middle(1));
    control_.setSelectedSegment(1);
    control_.setSelectedSegment(3);
    EXPECT_THAT(takeChosen(), ElementsAre(2U, 2U, 2U));
    EXPECT_EQ(control_.selectedSegment(), 1U);
}

TEST_F(SegmentedControlTest, ArrowsAndClicksFollowWhatTheEyeSees) {
    const auto keys = [this](std::initializer_list<Qt::Key> pressed) {
        for (const Qt::Key key : pressed) {
            QTest::keyClick(&control_, key);
        }
        return takeChosen();
    };
    EXPECT_EQ(control_.segmentRect(0), QRect(0, 0, 87, 20));
    EXPECT_EQ(control_.segmentRect(1), QRect(87, 0, 86, 20));
    EXPECT_THAT(keys({Qt::Key_Right, Qt::Key_Right, Qt::Key_Right}), ElementsAre(1U, 2U));
    EXPECT_THAT(keys({Qt::Key_Left, Qt::Key_Home, Qt::Key_Home}), ElementsAre(1U, 0U));
    EXPECT_THAT(keys({Qt::Key_Space, Qt::Key_Return}), ElementsAre(0U, 0U));
    window_.setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(control_.segmentRect(0), QRect(173, 0, 87, 20));
    EXPECT_THAT(keys({Qt::Key_Right, Qt::Key_Left}), ElementsAre(1U));
    click(2);
    EXPECT_THAT(takeChosen(), ElementsAre(2U));
}

TEST_F(SegmentedControlTest, TheFocusRingWaitsForTheKeyboard) {
    window_.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
    control_.clearFocus();
    const QImage resting = rendering(control_, 1);
    control_.setFocus(Qt::ActiveWindowFocusReason);
    EXPECT_EQ(rendering(control_, 1), resting);
    QTest::keyClick(&control_, Qt::Key_Home);
    EXPECT_NE(rendering(control_, 1), resting);
}

TEST_F(SegmentedControlTest, ThePlateSlidesToTheChosenSegment) {
    const auto isPlate = [this](std::size_t segment) {
        const QPoint place = control_.segmentRect(segment).topLeft() + QPoint(10, 4);
        return rendering(control_, 1).pixelColor(place) == QColor(Qt::white);
    };
    EXPECT_TRUE(isPlate(0));
    click(2);
    auto* slide = runningAnimation();
    slide->pause();
    EXPECT_TRUE(isPlate(0));
    slide->setCurrentTime(125);
    EXPECT_TRUE(isPlate(1));
    slide->setCurrentTime(250);
    EXPECT_TRUE(isPlate(2));
    control_.setSelectedSegment(0);
    EXPECT_TRUE(isPlate(0)) << "the program's own choice jumps";
}

TEST_F(SegmentedControlTest, AScreenReaderSeesRadioButtons) {
    QAccessibleInterface* group = QAccessible::queryAccessibleInterface(&control_);
    ASSERT_EQ(group->childCount(), 3);
    QAccessibleInterface* second = group->child(1);
    EXPECT_EQ(second->role(), QAccessible::RadioButton);
    EXPECT_EQ(second->text(QAccessible::Name), QStringLiteral("To Do"));
    EXPECT_TRUE(group->child(0)->state().checked);
    EXPECT_FALSE(second->state().checked);
    EXPECT_EQ(second->rect(), QRect(control_.mapToGlobal(QPoint(87, 0)), QSize(86, 20)));
    second->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    second->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_THAT(takeChosen(), ElementsAre(1U, 1U));
    control_.setSegmentCount(1);
    EXPECT_FALSE(second->isValid());
    EXPECT_EQ(group->child(1), nullptr);
}

}  // namespace
}  // namespace quillet::test
