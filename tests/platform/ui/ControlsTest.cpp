// The button and the field of a row.

#include <QAccessible>
#include <QTest>
#include <gmock/gmock.h>

#include "platform/ui/ImageButton.h"
#include "platform/ui/TextField.h"
#include "tests/platform/ui/Rendering.h"

namespace quillet::test {
namespace {

using platform::ImageButton;
using platform::TextField;

// The smallest rectangle (device pixels) that holds all ink; null for none.
QRect inkOf(const QImage& image) {
    QRect ink;
    for (int i = 0; i < image.width() * image.height(); ++i) {
        const QPoint place(i % image.width(), i / image.width());
        ink |= image.pixelColor(place).alpha() > 0 ? QRect(place, QSize(1, 1)) : QRect();
    }
    return ink;
}

TEST(ImageButton, DrawsItsImageSharpAndAtItsOpacity) {
    ImageButton button;
    button.setAlphaValue(0.3);
    std::vector<QImage> images;
    for (const auto& [ratio, colour] : {std::pair(3, Qt::black), {1, Qt::red}, {2, Qt::blue}}) {
        images.emplace_back(20 * ratio, 20 * ratio, QImage::Format_ARGB32).fill(colour);
        images.back().setDevicePixelRatio(ratio);
    }
    button.setImage(platform::Image(images));
    button.resize(32, 32);
    for (const double ratio : kDevicePixelRatios) {
        SCOPED_TRACE(ratio);
        const QImage image = rendering(button, ratio);
        const QRect ink = inkOf(image);
        EXPECT_EQ(ink.size(), (QSizeF(20, 20) * ratio).toSize());
        for (const QPoint place : {ink.topLeft(), ink.center(), ink.bottomRight()}) {
            EXPECT_NEAR(image.pixelColor(place).alpha(), 77, 2);
        }
        const QColor drawn = image.pixelColor(ink.center());
        EXPECT_EQ(drawn.red() > 0, ratio == 1);
        EXPECT_EQ(drawn.blue() > 0, ratio > 1 && ratio <= 2);
    }
}

TEST(ImageButton, ShowsThatItIsPressedOrFocusedAndNothingOfHovering) {
    QWidget window;
    ImageButton button(&window);
    int runs = 0;
    button.setAction([&] { ++runs; });
    button.resize(24, 24);
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    button.clearFocus();
    const auto isMarked = [&] { return !inkOf(rendering(button, 1)).isNull(); };
    QWindow* mouse = window.windowHandle();
    QTest::mouseMove(mouse, {10, 10});
    EXPECT_FALSE(isMarked());
    for (const bool cancels : {false, true}) {
        QTest::mousePress(mouse, Qt::LeftButton, {}, {10, 10});
        EXPECT_TRUE(isMarked());
        if (cancels) {
            platform::cancelPress(button);
            QTest::mouseMove(mouse, {11, 10});
            EXPECT_FALSE(isMarked());
        }
        QTest::mouseRelease(mouse, Qt::LeftButton, {}, {11, 10});
        EXPECT_FALSE(isMarked());
    }
    button.setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(isMarked());
    QTest::keyClick(&button, Qt::Key_Space);
    QTest::keyClick(&button, Qt::Key_Return);
    EXPECT_EQ(runs, 3);
}

TEST(TextField, ShowsOneLineOfPlainText) {
    std::string huge = "a";
    while (huge.size() < 1'000'000) {
        huge += "\U0001F600";
    }
    TextField field;
    field.resize(30000, 20);  // wider than any line
    for (const auto& [text, shown] : {
             std::pair<std::string, std::string>{"<b>a</b> &amp; &b", "<b>a</b> &amp; &b"},
             {"a\r\nb\n\n\tc", "a b c"},
             {"a\u2028b\u2029c\u0085d", "a b c d"},
             {std::string("a\0b\x7F", 4), "a b "},
             {"\u202Ea\u202C\u2067b\u2069\u200Fc\u061Cd", "abcd"},
             {"a\xFF\xC3", "a\uFFFD\uFFFD"},
             {"\U0001F468\u200D\U0001F469", "\U0001F468\u200D\U0001F469"},
             {std::string(1'000'000, '\n') + "end", " end"},
             {huge, huge.substr(0, 1 + 511 * 4)},  // 1023 units: no pair is split
         }) {
        field.setStringValue(text);
        EXPECT_EQ(field.displayedText().toStdString(), shown);
    }
}

TEST(TextField, FitsExactlyIntoItsSizeHintAndElseEndsInAnEllipsisInItsOwnDirection) {
    for (const auto& [text, leftToRight] : {std::pair("10:42 \u4F60", true),
                                            {"fjord \u05D0\u05D1", true},
                                            {"\u05D0\u05D1\u05D2 \u05D3\u05D4\u05D5", false}}) {
        SCOPED_TRACE(text);
        TextField field;
        field.setStringValue(text);
        field.resize(field.sizeHint());
        EXPECT_EQ(field.displayedText(), QString::fromUtf8(text));
        field.resize(field.width() - 2, field.height());
        EXPECT_TRUE(field.displayedText().endsWith(QChar(0x2026)));
        field.resize(30, 20);
        // The dots are the only ink at their end, and lie on the base line.
        const QImage image = rendering(field, 4);
        const int side = leftToRight ? inkOf(image).right() - 19 : inkOf(image).left();
        const QRect end(side, 0, 20, image.height());
        EXPECT_GT(inkOf(image.copy(end)).top(), image.height() / 2);
        field.resize(300, 20);
        EXPECT_LT(inkOf(rendering(field, 1)).right(), 80);
        field.setLayoutDirection(Qt::RightToLeft);
        EXPECT_GT(inkOf(rendering(field, 1)).left(), 220);
    }
}

}  // namespace
}  // namespace quillet::test
