#include <QAccessible>
#include <QTest>
#include <gtest/gtest.h>

#include "platform/ui/ImageButton.h"
#include "tests/platform/ui/Rendering.h"

namespace quillet::test {
namespace {

using platform::Image;
using platform::ImageButton;

// A picture of one colour, 20 points wide.
QImage square(int devicePixelRatio, const QColor& colour) {
    QImage image(20 * devicePixelRatio, 20 * devicePixelRatio, QImage::Format_ARGB32);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(colour);
    return image;
}

TEST(ImageButton, DrawsItsImageSharpAndAtItsOpacity) {
    ImageButton button;
    button.setAlphaValue(0.3);
    button.setImage(Image({square(3, Qt::black), square(1, Qt::red), square(2, Qt::blue)}));
    button.resize(32, 32);
    for (const double ratio : kDevicePixelRatios) {
        SCOPED_TRACE(ratio);
        const QImage image = rendering(button, ratio);
        int covered = 0;
        for (int x = 0; x < image.width(); ++x) {
            const int alpha = image.pixelColor(x, image.height() / 2).alpha();
            EXPECT_TRUE(alpha == 0 || std::abs(alpha - 77) <= 2) << x << " has " << alpha;
            covered += alpha > 0 ? 1 : 0;
        }
        EXPECT_EQ(covered, static_cast<int>(20 * ratio));
        const QColor drawn = image.pixelColor(image.width() / 2, image.height() / 2);
        EXPECT_EQ(drawn.red() > 0, ratio == 1);
        EXPECT_EQ(drawn.blue() > 0, ratio > 1 && ratio <= 2);
    }
}

TEST(ImageButton, ShowsThatItIsPressedOrFocusedAndNothingOfHovering) {
    QWidget window;
    ImageButton button(&window);
    int runs = 0;
    button.setAction([&] { ++runs; });
    button.setImage(Image({square(1, Qt::black)}));
    button.setAlphaValue(0.3);
    button.resize(24, 24);
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    button.clearFocus();
    const auto image = [&button] { return rendering(button, 1); };
    const QImage resting = image();
    QWindow* mouse = window.windowHandle();
    QTest::mouseMove(mouse, {10, 10});
    EXPECT_EQ(image(), resting);
    QTest::mousePress(mouse, Qt::LeftButton, {}, {10, 10});
    EXPECT_GT(image().pixelColor(10, 10).alpha(), resting.pixelColor(10, 10).alpha());
    QTest::mouseRelease(mouse, Qt::LeftButton, {}, {10, 10});
    EXPECT_EQ(image(), resting);
    QTest::mousePress(mouse, Qt::LeftButton, {}, {10, 10});
    platform::cancelPress(button);
    QTest::mouseMove(mouse, {11, 10});
    EXPECT_EQ(image(), resting);
    QTest::mouseRelease(mouse, Qt::LeftButton, {}, {11, 10});
    button.setFocus(Qt::TabFocusReason);
    EXPECT_GT(image().pixelColor(10, 0).alpha(), 0);
    QTest::keyClick(&button, Qt::Key_Space);
    QTest::keyClick(&button, Qt::Key_Return);
    EXPECT_EQ(runs, 3);
}

TEST(ImageButton, DescriptionDoesNotRepeatTheName) {
    ImageButton button;
    button.setAccessibleName(QStringLiteral("Reply"));
    const auto* reader = QAccessible::queryAccessibleInterface(&button);
    button.setToolTip(QStringLiteral("To the sender"));
    EXPECT_EQ(reader->text(QAccessible::Description), QStringLiteral("To the sender"));
    button.setToolTip(QStringLiteral("Reply"));
    EXPECT_EQ(reader->text(QAccessible::Description), QString());
}

}  // namespace
}  // namespace quillet::test
