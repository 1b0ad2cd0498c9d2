// KXTint and FlippedView.

#include <QImage>
#include <gtest/gtest.h>
#include <vector>

#include "platform/base/NotificationCenter.h"
#include "views/FlippedView.h"
#include "views/KXTint.h"

namespace quillet::test {
namespace {

const QColor kBlue(0, 0, 255);

// Opaque red, half transparent red and nothing, side by side, at scales 1 and 2.
platform::Image makeImage() {
    QImage once(3, 1, QImage::Format_ARGB32);
    for (const auto& [x, alpha] : {std::pair(0, 255), {1, 128}, {2, 0}}) {
        once.setPixelColor(x, 0, QColor(255, 0, 0, alpha));
    }
    QImage twice = once.scaled(6, 2);
    twice.setDevicePixelRatio(2);
    return platform::Image({once, twice});
}

TEST(KXTint, TintTakesTheColourAndKeepsAlphaAndScale) {
    const platform::Image tinted = KXTint::kx_imageTintedWithColor(makeImage(), kBlue);
    for (const double ratio : {1, 2}) {
        const QImage drawn = tinted.representationFor(ratio);
        EXPECT_EQ(drawn.deviceIndependentSize(), QSizeF(3, 1));
        EXPECT_EQ(drawn.pixelColor(0, 0), kBlue);
        EXPECT_EQ(drawn.pixelColor(drawn.width() / 2, 0), QColor(0, 0, 255, 128));
        EXPECT_EQ(drawn.pixelColor(drawn.width() - 1, 0).alpha(), 0);
    }
    const auto untinted = KXTint::kx_imageTintedWithColor(makeImage(), QColor());
    EXPECT_EQ(untinted.representations(), makeImage().representations());
}

TEST(KXTint, BackgroundShowsWhereTheImageLetsItThrough) {
    const auto image = KXTint::tn_add_background_color_to_image(makeImage(), kBlue);
    const QImage blue = image.representationFor(2);
    EXPECT_EQ(blue.pixelColor(0, 0), QColor(255, 0, 0));
    EXPECT_NEAR(blue.pixelColor(3, 0).red(), 128, 1);
    EXPECT_EQ(blue.pixelColor(5, 0), kBlue);
}

TEST(FlippedView, BlockAloneDrawsTheDirtyRectangleAndTheViewsEndEndsItsObservation) {
    auto& center = platform::NotificationCenter::defaultCenter();
    QImage canvas(60, 40, QImage::Format_RGB32);
    canvas.fill(Qt::green);
    const QImage untouched = canvas;
    std::vector<QRect> drawn;
    int called = 0;
    {
        FlippedView view(QRect(0, 0, 60, 40),
                         [&](FlippedView&, const QRect& dirty) { drawn.push_back(dirty); });
        view.render(&canvas, QPoint(5, 5), QRegion(5, 5, 10, 20), QWidget::RenderFlags());
        view.setDrawingBlock({});
        view.render(&canvas, QPoint(), QRegion(), QWidget::RenderFlags());
        center.addObserver(&view, "name", [&](const platform::Notification&) { ++called; });
        center.postNotification("name");
    }
    center.postNotification("name");
    EXPECT_EQ(drawn, std::vector{QRect(5, 5, 10, 20)});
    EXPECT_EQ(canvas, untouched);
    EXPECT_EQ(called, 1);
}

}  // namespace
}  // namespace quillet::test
