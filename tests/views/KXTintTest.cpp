#include <QImage>
#include <gtest/gtest.h>

#include "views/KXTint.h"

namespace quillet::test {
namespace {

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

TEST(KXTint, TintTakesTheColourAndKeepsAlphaAndScale) {
    const platform::Image image = makeImage();
    const platform::Image tinted = KXTint::kx_imageTintedWithColor(image, kBlue);
    EXPECT_EQ(tinted.size(), QSizeF(3, 1));
    for (const double ratio : {1, 2}) {
        const QImage drawn = tinted.representationFor(ratio);
        EXPECT_EQ(drawn.devicePixelRatio(), ratio);
        EXPECT_EQ(drawn.pixelColor(0, 0), kBlue);
        EXPECT_EQ(drawn.pixelColor(drawn.width() / 2, 0), QColor(0, 0, 255, 128));
        EXPECT_EQ(drawn.pixelColor(drawn.width() - 1, 0).alpha(), 0);
    }
    const auto untinted = KXTint::kx_imageTintedWithColor(image, QColor());
    EXPECT_EQ(untinted.representations(), makeImage().representations());
}

TEST(KXTint, BackgroundShowsWhereTheImageLetsItThrough) {
    const auto image = KXTint::tn_add_background_color_to_image(makeImage(), kBlue);
    const QImage blue = image.representationFor(2);
    EXPECT_EQ(blue.pixelColor(0, 0), QColor(255, 0, 0));
    EXPECT_NEAR(blue.pixelColor(3, 0).red(), 128, 1);
    EXPECT_EQ(blue.pixelColor(5, 0), kBlue);
}

}  // namespace
}  // namespace quillet::test
