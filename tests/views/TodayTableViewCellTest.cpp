#include <QAccessible>
#include <QApplication>
#include <QPainter>
#include <QStyle>
#include <gmock/gmock.h>

#include "tests/support/CalledActions.h"
#include "tests/views/WidgetWindow.h"
#include "views/TodayTableViewCell.h"

namespace quillet::test {
namespace {

const std::string kLongText(90, 'a');  // fits into no row

TEST(TodayTableViewCell, PartsLieWhereTheDesignPutsThem) {
    for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        SCOPED_TRACE(direction);
        QApplication::setLayoutDirection(direction);
        WidgetWindow widget;
        widget.show({makeMessage("Ada", "Engine", "09:41"), makeMessage("Grace", kLongText, "")});
        const TodayTableViewCell& cell = widget.cell(0);
        const int senderWidth = cell.fromField()->sizeHint().width();
        const int dateWidth = cell.dateField()->sizeHint().width();
        const std::vector<std::pair<const QWidget*, QRect>> parts = {
            {cell.horizontalSeparator1(), {35, 35, 285, 1}},
            {cell.fromField(), {35, 45, senderWidth, 20}},
            {cell.dateField(), {300 - dateWidth, 45, dateWidth, 20}},
            {cell.subjectField(), {35, 65, 186, 20}},
            {cell.replyButton(), {224, 65, 20, 20}},
            {cell.archiveButton(), {252, 65, 20, 20}},
            {cell.trashButton(), {280, 65, 20, 20}},
            {widget.cell(1).subjectField(), {35, 125, 186, 20}}};
        for (const auto& [part, frame] : parts) {
            EXPECT_EQ(widget.frame(*part),
                      QStyle::visualRect(direction, QRect(0, 0, 320, 700), frame));
        }
    }
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

TEST(TodayTableViewCell, ReusedCellChangesItsTextsAloneAndLongOnesEndInAnEllipsis) {
    WidgetWindow widget;
    widget.show({makeMessage("Ada", "Engine", "09:41")});
    TodayTableViewCell& cell = widget.cell(0);
    const auto second = makeMessage(kLongText, kLongText, "31/12/2025");
    widget.show({second});
    ASSERT_EQ(&widget.cell(0), &cell);
    EXPECT_EQ(cell.findChildren<platform::TextField*>().size(), 3);
    EXPECT_EQ(cell.message(), second);
    EXPECT_TRUE(cell.fromField()->displayedText().endsWith(QChar(0x2026)));
    EXPECT_EQ(cell.subjectField()->stringValue(), kLongText);
    EXPECT_EQ(cell.dateField()->width(), cell.dateField()->sizeHint().width());
    EXPECT_EQ(cell.fromField()->geometry().right() + 1 + 10, cell.dateField()->x());
    widget.show({makeMessage("Ada", "", "09:41")});
    EXPECT_EQ(cell.accessibleRowName(), QStringLiteral("Ada, 09:41"));
}

TEST(TodayTableViewCell, ColoursAreThoseOfTheLook) {
    for (const bool dark : {false, true}) {
        SCOPED_TRACE(dark ? "dark" : "light");
        WidgetWindow widget(dark);
        widget.controller->setDarkAppearance(!dark);  // too late: the look is fixed
        widget.show({makeMessage("Ada", "Engine", "09:41")});
        const TodayTableViewCell& cell = widget.cell(0);
        const auto ink = [dark](float alpha) {
            const float level = dark ? 1 : 1.0F / 3;
            return QColor::fromRgbF(level, level, level, alpha);
        };
        EXPECT_EQ(cell.fromField()->textColor(), ink(dark ? 0.85F : 1));
        EXPECT_EQ(cell.subjectField()->textColor(), ink(dark ? 0.55F : 1));
        EXPECT_EQ(cell.dateField()->textColor(), ink(0.4F));

        // All colours are grays; the lid of the box is a stroke of one whole pixel.
        const int ground = dark ? 0 : 255;
        const QColor separator = widget.picture(*cell.horizontalSeparator1()).pixelColor(100, 0);
        EXPECT_NEAR(separator.red(), ground + 0.2 * (ink(1).red() - ground), 2);
        const QImage archive = widget.picture(*cell.archiveButton());
        EXPECT_NEAR(archive.pixelColor(10, 3).red(), ground + 0.3 * (255 - 2 * ground), 2);
        EXPECT_EQ(archive.pixelColor(10, 5).red(), ground);
    }
}

TEST(TodayTableViewCell, ButtonsSendTheirCommandForTheMessageShown) {
    WidgetWindow widget;
    widget.show({makeMessage("Ada", "Engine", "09:41"), makeMessage("Grace", "Compiler", "09:40")});
    const TodayTableViewCell& cell = widget.cell(1);
    TodayTableViewCell empty(QRect(0, 0, 320, 60));
    empty.prepare(widget.controller);
    const CalledActions actions;
    QStringList names;
    for (const auto button : {&TodayTableViewCell::replyButton,
                              &TodayTableViewCell::archiveButton,
                              &TodayTableViewCell::trashButton}) {
        widget.click(*(cell.*button)());
        (empty.*button)()->click();
        names += (cell.*button)()->accessibleName();
        const auto* reader = QAccessible::queryAccessibleInterface((cell.*button)());
        EXPECT_EQ(reader->text(QAccessible::Description), QString()) << "repeats the name";
    }
    EXPECT_EQ(names.join(QLatin1Char(' ')), QStringLiteral("Reply Archive Delete"));
    EXPECT_THAT(actions.names(),
                testing::ElementsAre(
                    "reply GraceCompiler", "archive GraceCompiler", "delete GraceCompiler"));
    EXPECT_EQ(widget.table().selectedRow(), platform::Table::kNoRow);
}

// Whatever a sender is called, the rest of the table is drawn as beside a sender without name.
TEST(TodayTableViewCell, HostileSenderDisturbsNoNeighbour) {
    std::string stack = "A";
    for (int mark = 0; mark < 60; ++mark) {
        stack += "\u0353\u0301";
    }
    WidgetWindow widget;
    const auto nameless = makeMessage("", "Engine", "09:41");
    widget.show({nameless, nameless});
    const QImage plain = widget.picture(widget.table());
    for (const std::string& sender :
         {std::string("<b>Ada</b><br>\r\n\u2028"), std::string("\u202E\u2067Ada\xff"), stack}) {
        SCOPED_TRACE(sender);
        widget.show({makeMessage(sender, "Engine", "09:41"), nameless});
        const QRect field = widget.cell(0).fromField()->geometry();
        QImage drawn = widget.picture(widget.table());
        EXPECT_NE(drawn, plain);
        QPainter(&drawn).drawImage(field, plain, field);
        EXPECT_EQ(drawn, plain);
    }
}

}  // namespace
}  // namespace quillet::test
