#include <QImage>
#include <gtest/gtest.h>
#include <vector>

#include "platform/base/NotificationCenter.h"
#include "views/FlippedView.h"

namespace quillet::test {
namespace {

TEST(FlippedView, BlockAloneDrawsTheDirtyRectangle) {
    std::vector<QRect> drawn;
    FlippedView view(QRect(0, 0, 60, 40),
                     [&](FlippedView& /*self*/, const QRect& dirty) { drawn.push_back(dirty); });
    QImage canvas(60, 40, QImage::Format_RGB32);
    canvas.fill(Qt::green);
    const QImage untouched = canvas;
    view.render(&canvas, QPoint(5, 5), QRegion(5, 5, 10, 20), QWidget::RenderFlags());
    view.setDrawingBlock({});
    view.render(&canvas, QPoint(), QRegion(), QWidget::RenderFlags());
    EXPECT_EQ(drawn, std::vector{QRect(5, 5, 10, 20)});
    EXPECT_EQ(canvas, untouched);
}

TEST(FlippedView, LeavesTheNotificationCenterWhenItIsDestroyed) {
    auto& center = platform::NotificationCenter::defaultCenter();
    int called = 0;
    {
        const FlippedView view;
        center.addObserver(&view, "name", [&](const platform::Notification&) { ++called; });
        center.postNotification("name");
    }
    center.postNotification("name");
    EXPECT_EQ(called, 1);
}

}  // namespace
}  // namespace quillet::test
