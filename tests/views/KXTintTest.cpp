#include <QImage>
#include <gtest/gtest.h>

#include "views/KXTint.h"

namespace quillet::test {
namespace {

using KXTint::kx_imageTintedWithColor;
using KXTint::tn_add_background_color_to_image;

const QColor kBlue(0, 0, 255);

// Opaque red, half transparent red and nothing, side by side, at scales 1 and 2.
platform::Image makeImage() {
    QImage once(3, 1, QImage::Format_ARGB32);
    once.setPixelColor(0, 0, QColor(255, 0, 0));
    once.setPixelColor(1, 0, QColor(255, 0, 0, 128));
    once.setPixelColor(2, 0, QColor(0, 0, 0, 0));
    QImage twice = once.scaled(6, 2);
    twice.setDevicePixelRatio(2);
    return platform::Image({once, twice});
}

TEST(KXTint, TintTakesTheColourAndKeepsAlphaScaleAndReceiver) {
    const platform::Image image = makeImage();
    const platform::Image tinted = kx_imageTintedWithColor(image, kBlue);
    ASSERT_EQ(tinted.representations().size(), 2U);
    EXPECT_EQ(tinted.size(), QSizeF(3, 1));
    for (const QImage& drawn : tinted.representations()) {
        EXPECT_EQ(drawn.pixelColor(0, 0), kBlue);
        EXPECT_EQ(drawn.pixelColor(drawn.width() / 2, 0), QColor(0, 0, 255, 128));
        EXPECT_EQ(drawn.pixelColor(drawn.width() - 1, drawn.height() - 1).alpha(), 0);
    }
    EXPECT_EQ(image.representations(), makeImage().representations());
    EXPECT_EQ(kx_imageTintedWithColor(image, QColor()).representations(),
              makeImage().representations());
    EXPECT_TRUE(kx_imageTintedWithColor(platform::Image(), kBlue).isNull());
}

TEST(KXTint, BackgroundShowsWhereTheImageLetsItThrough) {
    const QImage blue = tn_add_background_color_to_image(makeImage(), kBlue).representations()[1];
    EXPECT_EQ(blue.devicePixelRatio(), 2);
    EXPECT_EQ(blue.pixelColor(0, 0), QColor(255, 0, 0));
    EXPECT_NEAR(blue.pixelColor(3, 0).red(), 128, 1);
    EXPECT_NEAR(blue.pixelColor(3, 0).blue(), 127, 1);
    EXPECT_EQ(blue.pixelColor(5, 0), kBlue);
}

}  // namespace
}  // namespace quillet::test
