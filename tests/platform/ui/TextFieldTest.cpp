#include <QAccessible>
#include <gmock/gmock.h>

#include "platform/ui/TextField.h"
#include "tests/platform/ui/Rendering.h"

namespace quillet::test {
namespace {

using platform::TextField;

constexpr int kWide = 30000;  // points; wider than any line

// The columns (device pixels) that hold ink, as first and last; {-1, -1} for none.
std::pair<int, int> inkColumns(const QImage& image) {
    std::pair<int, int> columns{-1, -1};
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixelColor(x, y).alpha() > 0) {
                columns = {columns.first < 0 ? x : columns.first, x};
            }
        }
    }
    return columns;
}

TEST(TextField, ShowsOneLineOfPlainText) {
    std::string huge = "a";
    while (huge.size() < 1'000'000) {
        huge += "\U0001F600";
    }
    const std::pair<std::string, std::string> cases[] = {
        {"<b>a</b> &amp; &b", "<b>a</b> &amp; &b"},
        {"a\r\nb\n\n\tc", "a b c"},
        {"a\u2028b\u2029c\u0085d", "a b c d"},
        {std::string("a\0b\x7F", 4), "a b "},
        {"\u202Ea\u202C\u2067b\u2069\u200Fc\u061Cd", "abcd"},
        {"a\xFF\xC3", "a\uFFFD\uFFFD"},
        {"\U0001F468\u200D\U0001F469", "\U0001F468\u200D\U0001F469"},
        {std::string(1'000'000, '\n') + "end", " end"},
        {huge, huge.substr(0, 1 + 511 * 4)},  // 1023 units: no pair is split
    };
    for (const auto& [text, shown] : cases) {
        SCOPED_TRACE(shown);
        TextField field;
        field.resize(kWide, 20);
        field.setStringValue(text);
        EXPECT_EQ(field.displayedText().toStdString(), shown);
    }
}

TEST(TextField, ALongTextEndsInAnEllipsisInItsOwnDirection) {
    for (const auto& [text, atRight] :
         {std::pair{"A long subject that does not fit at all", true},
          {"\u05D0\u05D1\u05D2 \u05D3\u05D4\u05D5 \u05D6\u05D7\u05D8 \u05D9\u05DB\u05DC", false}}) {
        SCOPED_TRACE(text);
        TextField field;
        field.setFontSize(13);
        field.setStringValue(text);
        field.resize(60, 20);
        // The dots are the only ink at their end, and lie on the base line.
        const QImage image = rendering(field, 4);
        const QRect end(atRight ? image.width() - 24 : 0, 0, 24, image.height() / 2);
        EXPECT_EQ(inkColumns(image.copy(end)).first, -1);
        EXPECT_NE(inkColumns(image.copy(end.translated(0, image.height() / 2))).first, -1);
    }
}

TEST(TextField, FitsExactlyIntoItsSizeHintAndLiesWhereTheLayoutDirectionStarts) {
    for (const char* text : {"10:42", "fjord \u05D0\u05D1", "\u05D0\u05D1\u05D2", "\u4F60\u597D"}) {
        SCOPED_TRACE(text);
        TextField field;
        field.setStringValue(text);
        field.resize(field.sizeHint());
        EXPECT_EQ(field.displayedText(), QString::fromUtf8(text));
        field.resize(field.width() - 2, field.height());
        EXPECT_TRUE(field.displayedText().endsWith(QChar(0x2026)));
        field.resize(300, 20);
        EXPECT_LT(inkColumns(rendering(field, 1)).second, 80);
        field.setLayoutDirection(Qt::RightToLeft);
        EXPECT_GT(inkColumns(rendering(field, 1)).first, 220);
    }
}

}  // namespace
}  // namespace quillet::test
