#include <QAccessible>
#include <QScreen>
#include <QTest>
#include <gtest/gtest.h>

#include "app/Panel.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {

namespace {

// Contents of a given height, like a widget with its rows.
class Contents : public QWidget {
public:
    explicit Contents(int height) : height_(height) {}
    QSize sizeHint() const override { return {320, height_}; }
    QSize minimumSizeHint() const override { return sizeHint(); }
    void setHeight(int height) {
        height_ = height;
        updateGeometry();
        QCoreApplication::postEvent(this, new QEvent(QEvent::LayoutRequest));
    }

private:
    int height_;
};

class PanelTest : public testing::Test {
protected:
    PanelTest() {
        panel.setContents(&contents, {10, 0, 10, 0}, platform::Look::Light);
        panel.present();
    }
    ~PanelTest() override { panel.takeContents(); }

    Contents contents{100};
    Panel panel;
};

}  // namespace

TEST_F(PanelTest, IsAWindowThatDocksAtTheRightEdgeAndFollowsItsContents) {
    const QRect screen = panel.screen()->availableGeometry();
    EXPECT_EQ(panel.geometry().right(), screen.right());
    EXPECT_EQ(panel.geometry().top(), screen.top());
    EXPECT_EQ(contents.size(), QSize(320, 100));
    const int frame = panel.height() - 100;
    contents.setHeight(340);
    EXPECT_TRUE(waitUntil([&] { return panel.height() == 340 + frame; }));
    EXPECT_EQ(contents.size(), QSize(320, 340));
    contents.setHeight(5000);
    EXPECT_TRUE(waitUntil([&] { return contents.height() == 5000; }));
    EXPECT_LE(panel.height(), screen.height()) << "what is higher scrolls";
    const QAccessibleInterface* window = QAccessible::queryAccessibleInterface(&panel);
    EXPECT_EQ(window->role(), QAccessible::Window);
    EXPECT_EQ(window->text(QAccessible::Name), QStringLiteral("Quillet Today"));
}

TEST_F(PanelTest, EscapeAndClosingDismissIt) {
    int dismissed = 0;
    panel.setDismissed([&] { ++dismissed; });
    QTest::keyClick(panel.windowHandle(), Qt::Key_Escape);
    EXPECT_EQ(dismissed, 1);
    EXPECT_FALSE(panel.close());
    EXPECT_EQ(dismissed, 2);
}

}  // namespace quillet::test
