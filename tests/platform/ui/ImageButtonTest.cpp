#include <QTest>
#include <gtest/gtest.h>

#include "platform/ui/ImageButton.h"
#include "tests/platform/ui/Rendering.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

using platform::Image;
using platform::ImageButton;

// A picture of one colour, 20 points wide.
QImage square(double devicePixelRatio, const QColor& colour, int points = 20) {
    QImage image((QSizeF(points, points) * devicePixelRatio).toSize(), QImage::Format_ARGB32);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(colour);
    return image;
}

TEST(Image, OffersTheRepresentationThatIsFineEnough) {
    const Image image({square(3, Qt::blue), QImage(), square(1, Qt::red), square(2, Qt::green)});
    EXPECT_EQ(image.size(), QSizeF(20, 20));
    const std::pair<double, double> cases[] = {
        {1, 1}, {1.25, 2}, {1.5, 2}, {2, 2}, {2.5, 3}, {4, 3}};
    for (const auto& [wanted, offered] : cases) {
        EXPECT_EQ(image.representationFor(wanted).devicePixelRatio(), offered) << wanted;
    }
    EXPECT_TRUE(Image().isNull());
    EXPECT_EQ(Image().size(), QSizeF(0, 0));
    EXPECT_TRUE(Image().representationFor(1).isNull());
}

TEST(Image, IsFoundByNameAmongTheBundlesImages) {
    const TemporaryFolder resources;
    const EnvironmentVariable variable("QUILLET_RESOURCES", resources.path());
    resources.makeFolder("images");
    for (const auto& [file, ratio] :
         {std::pair{"images/w_test.png", 1}, {"images/w_test@3x.png", 3}}) {
        ASSERT_TRUE(square(ratio, Qt::red).save(QString::fromStdString(resources.path(file))));
    }
    resources.writeFile("images/w_test@2x.png", "not a picture");
    const Image image = Image::named("w_test");
    ASSERT_EQ(image.representations().size(), 2U);
    EXPECT_EQ(image.size(), QSizeF(20, 20));
    EXPECT_EQ(image.representations().back().devicePixelRatio(), 3);
    EXPECT_TRUE(Image::named("w_none").isNull());
}

TEST(ImageButton, DrawsItsImageSharpAndAtItsOpacity) {
    ImageButton button;
    button.setAlphaValue(0.3);
    button.resize(32, 32);
    for (const int points : {20, 40}) {  // the larger one is made smaller
        button.setImage(Image({square(1, Qt::black, points), square(3, Qt::black, points)}));
        EXPECT_EQ(button.sizeHint(), QSize(points, points));
        for (const double ratio : kDevicePixelRatios) {
            SCOPED_TRACE(ratio);
            const QImage image = rendering(button, ratio);
            const int shown = static_cast<int>(std::min(points, 32) * ratio);
            int covered = 0;
            for (int x = 0; x < image.width(); ++x) {
                const int alpha = image.pixelColor(x, image.height() / 2).alpha();
                EXPECT_TRUE(alpha == 0 || std::abs(alpha - 77) <= 2) << x << " has " << alpha;
                covered += alpha > 0 ? 1 : 0;
            }
            EXPECT_EQ(covered, shown);
        }
    }
}

TEST(ImageButton, ShowsThatItIsPressedOrFocusedAndNothingOfHovering) {
    QWidget window;
    ImageButton button(&window);
    button.setImage(Image({square(1, Qt::black, 4)}));
    button.setAlphaValue(0.3);
    button.resize(20, 20);
    window.resize(60, 60);
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    button.clearFocus();
    QTest::mouseMove(window.windowHandle(), {50, 50});
    const auto image = [&button] { return rendering(button, 1); };
    const QImage resting = image();
    EXPECT_EQ(resting.pixelColor(10, 2).alpha(), 0);
    QTest::mouseMove(window.windowHandle(), {10, 10});
    EXPECT_EQ(image(), resting);
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, {10, 10});
    EXPECT_GT(image().pixelColor(10, 10).alpha(), resting.pixelColor(10, 10).alpha());
    EXPECT_GT(image().pixelColor(10, 2).alpha(), 0);
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, {10, 10});
    QTest::mouseMove(window.windowHandle(), {50, 50});
    EXPECT_EQ(image(), resting);
    button.setFocus(Qt::TabFocusReason);
    EXPECT_GT(image().pixelColor(10, 0).alpha(), 0);
}

TEST(ImageButton, RunsItsActionByMouseAndKeyboard) {
    ImageButton button;
    int runs = 0;
    button.setAction([&] { ++runs; });
    button.resize(20, 20);
    button.show();
    QTest::mouseClick(button.windowHandle(), Qt::LeftButton, {}, {10, 10});
    EXPECT_EQ(runs, 1);
    QTest::keyClick(&button, Qt::Key_Space);
    QTest::keyClick(&button, Qt::Key_Return);
    QTest::keyClick(&button, Qt::Key_Enter);
    QTest::keyClick(&button, Qt::Key_A);
    EXPECT_EQ(runs, 4);
    button.setAction([&] { button.setAction({}); });
    button.click();
    button.click();
    EXPECT_EQ(runs, 4);
}

}  // namespace
}  // namespace quillet::test
