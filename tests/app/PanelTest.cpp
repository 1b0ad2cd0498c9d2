#include <QAccessible>
#include <QScreen>
#include <QTest>
#include <gtest/gtest.h>

#include "app/Panel.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {

namespace {

// Contents of a given height, like a widget with its rows.
struct Contents : QWidget {
    QSize sizeHint() const override { return {320, wanted}; }
    QSize minimumSizeHint() const override { return sizeHint(); }
    int wanted = 100;
};

}  // namespace

TEST(Panel, IsAWindowThatDocksAtTheRightEdgeAndFollowsItsContentsAndIsDismissedByKey) {
    Contents contents;
    Panel panel;
    panel.setContents(&contents, {10, 0, 10, 0}, platform::Look::Light);
    panel.present();
    const auto grow = [&contents](int height) {
        contents.wanted = height;
        contents.updateGeometry();
        QCoreApplication::postEvent(&contents, new QEvent(QEvent::LayoutRequest));
    };
    const QRect screen = panel.screen()->availableGeometry();
    EXPECT_EQ(panel.geometry().right(), screen.right());
    EXPECT_EQ(panel.geometry().top(), screen.top());
    EXPECT_EQ(contents.size(), QSize(320, 100));
    const int frame = panel.height() - 100;
    grow(340);
    EXPECT_TRUE(waitUntil([&] { return panel.height() == 340 + frame; }));
    EXPECT_EQ(contents.size(), QSize(320, 340));
    grow(5000);
    EXPECT_TRUE(waitUntil([&] { return contents.height() == 5000; }));
    EXPECT_LE(panel.height(), screen.height()) << "what is higher scrolls";
    const QAccessibleInterface* window = QAccessible::queryAccessibleInterface(&panel);
    EXPECT_EQ(window->role(), QAccessible::Window);
    EXPECT_EQ(window->text(QAccessible::Name), QStringLiteral("Quillet Today"));
    int dismissed = 0;
    panel.setDismissed([&] { ++dismissed; });
    QTest::keyClick(panel.windowHandle(), Qt::Key_Escape);
    EXPECT_EQ(dismissed, 1);
    EXPECT_FALSE(panel.close());
    EXPECT_EQ(dismissed, 2);
    panel.takeContents();
}

}  // namespace quillet::test
