#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <gmock/gmock.h>

#include "platform/ui/SegmentedControl.h"
#include "tests/platform/ui/Rendering.h"

namespace quillet::test {
namespace {

using testing::ElementsAre;
using enum Qt::Key;

class SegmentedControlTest : public testing::Test {
protected:
    SegmentedControlTest() {
        control_.setSegmentCount(3);
        control_.setLabel("To Do", 1);
        control_.setAction([this] { chosen_.push_back(control_.selectedSegment()); });
        control_.setGeometry(40, 1, 260, 20);
        window_.resize(320, 30);
        window_.show();
        window_.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
        control_.setFocus(Qt::ActiveWindowFocusReason);
    }

    // Each returns what was chosen.
    std::vector<std::size_t> drag(QList<std::size_t> way, Qt::MouseButton button = Qt::LeftButton) {
        const auto middle = [this](std::size_t segment) {
            return control_.segmentRect(segment).center() + control_.pos();
        };
        QTest::mousePress(window_.windowHandle(), button, {}, middle(way.first()));
        QTest::mouseRelease(window_.windowHandle(), button, {}, middle(way.last()));
        return std::exchange(chosen_, {});
    }
    std::vector<std::size_t> press(std::initializer_list<Qt::Key> keys) {
        for (const Qt::Key key : keys) {
            QTest::keyClick(QApplication::focusWidget(), key);
        }
        return std::exchange(chosen_, {});
    }
    bool isPlate(std::size_t segment) {
        const QPoint place = control_.segmentRect(segment).topLeft() + QPoint(10, 4);
        return rendering(control_, 1).pixelColor(place) == QColor(Qt::white);
    }

    QWidget window_;
    platform::SegmentedControl control_{&window_};
    std::vector<std::size_t> chosen_;
};

TEST_F(SegmentedControlTest, AClickChoosesASegmentAlsoTheSelectedOneAndThePlateSlidesThere) {
    EXPECT_THAT(drag({2}), ElementsAre(2U));
    runningAnimation()->pause();
    for (const std::size_t segment : {0U, 1U, 2U}) {
        runningAnimation()->setCurrentTime(static_cast<int>(segment) * 124);
        EXPECT_TRUE(isPlate(segment));
    }
    EXPECT_THAT(drag({2}), ElementsAre(2U));
    EXPECT_THAT(drag({1, 0}), ElementsAre());
    EXPECT_THAT(drag({1, 2}), ElementsAre(2U)) << "back to the selected segment";
    EXPECT_THAT(drag({1}, Qt::RightButton), ElementsAre());
    control_.setSelectedSegment(1);
    control_.setSelectedSegment(3);
    EXPECT_TRUE(isPlate(1)) << "the program's own choice jumps";
    EXPECT_THAT(chosen_, ElementsAre());
}

TEST_F(SegmentedControlTest, ArrowsAndClicksFollowWhatTheEyeSeesAndKeysBringTheFocusRing) {
    const QImage withoutRing = rendering(control_, 1);
    EXPECT_THAT(press({Key_Home}), ElementsAre());
    EXPECT_NE(rendering(control_, 1), withoutRing);
    EXPECT_THAT(press({Key_Right, Key_Right, Key_Right, Key_Left, Key_Home, Key_Home, Key_End}),
                ElementsAre(1U, 2U, 1U, 0U, 2U));
    EXPECT_THAT(press({Key_End, Key_Up, Key_Up, Key_Up, Key_Down, Key_Space, Key_Return}),
                ElementsAre(1U, 0U, 1U, 1U, 1U));
    EXPECT_EQ(control_.segmentRect(0), QRect(0, 0, 87, 20));
    window_.setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(control_.segmentRect(0), QRect(173, 0, 87, 20));
    EXPECT_THAT(press({Key_Right, Key_Right, Key_Left}), ElementsAre(0U, 1U));
    EXPECT_THAT(drag({2}), ElementsAre(2U));
}

TEST_F(SegmentedControlTest, AScreenReaderSeesRadioButtons) {
    QAccessibleInterface* group = QAccessible::queryAccessibleInterface(&control_);
    QAccessibleInterface* second = group->child(1);
    EXPECT_EQ(group->role(), QAccessible::Grouping);
    EXPECT_EQ(second->role(), QAccessible::RadioButton);
    EXPECT_EQ(second->text(QAccessible::Name), QStringLiteral("To Do"));
    EXPECT_TRUE(group->child(0)->state().checked);
    EXPECT_FALSE(second->state().checked);
    EXPECT_EQ(second->rect(), QRect(control_.mapToGlobal(QPoint(87, 0)), QSize(86, 20)));
    second->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_THAT(chosen_, ElementsAre(1U));
    EXPECT_EQ(group->focusChild(), second);
}

}  // namespace
}  // namespace quillet::test
