#include <QCoreApplication>
#include <QWidget>
#include <gmock/gmock.h>

#include "platform/foundation/Exception.h"
#include "platform/ui/ConstraintLayout.h"
#include "platform/ui/LayoutConstraint.h"

namespace quillet::test {
namespace {

using platform::ConstraintLayout;

class Box : public QWidget {
public:
    explicit Box(QSize hint = {}) : hint_(hint) {}
    QSize sizeHint() const override { return hint_; }
    void setHint(QSize hint) {
        hint_ = hint;
        updateGeometry();
    }

private:
    QSize hint_;
};

// The lines of a message row.
struct Row {
    Row() {
        const platform::ViewsByName views{{"subjectField", subject},
                                          {"fromField", from},
                                          {"dateField", date},
                                          {"horizontalSeparator1", separator},
                                          {"archiveButton", archive},
                                          {"trashButton", trash},
                                          {"replyButton", reply}};
        for (const char* text :
             {"V:|-(0)-[horizontalSeparator1(1)]",
              "H:|-(35)-[horizontalSeparator1(>=1)]-(0)-|",
              "H:|-(35)-[fromField]-(>=10)-[dateField]",
              "H:[dateField]-(20)-|",
              "V:|-(10)-[fromField(20)]",
              "V:|-(10)-[dateField(20)]",
              "H:|-(35)-[subjectField]-(3)-[replyButton(20)]-(8)-[archiveButton(20)]-(8)-"
              "[trashButton(20)]-(20)-|",
              "V:|-(30)-[subjectField(20)]",
              "V:|-(30)-[archiveButton(20)]",
              "V:|-(30)-[trashButton(20)]",
              "V:|-(30)-[replyButton(20)]"}) {
            layout->addConstraints(text, views);
        }
    }

    void place(int width = 320) {
        container.resize(width, 60);
        layout->activate();
        layout->setGeometry(container.rect());
    }

    QWidget container;
    ConstraintLayout* layout = new ConstraintLayout(&container);
    Box* from = new Box({80, 16});
    Box* date = new Box({40, 16});
    Box* subject = new Box({500, 16});
    Box* separator = new Box;
    Box* archive = new Box;
    Box* trash = new Box;
    Box* reply = new Box;
};

TEST(ConstraintLayout, PlacesAMessageRowToThePixel) {
    Row row;
    row.place();
    EXPECT_EQ(row.separator->geometry(), QRect(35, 0, 285, 1));
    EXPECT_EQ(row.from->geometry(), QRect(35, 10, 80, 20));
    EXPECT_EQ(row.date->geometry(), QRect(260, 10, 40, 20));
    EXPECT_EQ(row.subject->geometry(), QRect(35, 30, 186, 20));
    EXPECT_EQ(row.reply->geometry(), QRect(224, 30, 20, 20));
    EXPECT_EQ(row.archive->geometry(), QRect(252, 30, 20, 20));
    EXPECT_EQ(row.trash->geometry(), QRect(280, 30, 20, 20));
}

TEST(ConstraintLayout, MirrorsAMessageRowInRightToLeftDirection) {
    Row row;
    row.container.setLayoutDirection(Qt::RightToLeft);
    row.place();
    EXPECT_EQ(row.separator->geometry(), QRect(0, 0, 285, 1));
    EXPECT_EQ(row.from->geometry(), QRect(205, 10, 80, 20));
    EXPECT_EQ(row.date->geometry(), QRect(20, 10, 40, 20));
    EXPECT_EQ(row.subject->geometry(), QRect(99, 30, 186, 20));
    EXPECT_EQ(row.trash->geometry(), QRect(20, 30, 20, 20));
}

TEST(ConstraintLayout, OfTwoViewsInALineTheRightOneGivesWay) {
    struct Case {
        const char* name;
        int fromHint, dateHint, dateResistance, fromWidth, dateWidth;
    };
    constexpr int kSame = ConstraintLayout::kDefaultCompressionResistance;
    const Case cases[] = {
        {"a long sender to the date", 400, 90, kSame, 165, 90},
        {"both fit exactly", 165, 90, kSame, 165, 90},
        {"one point too long", 166, 90, kSame, 165, 90},
        {"a long date to the sender", 90, 400, kSame, 90, 165},
        {"the sender to a date that resists more", 90, 200, kSame + 1, 55, 200},
        {"the date that resists less", 200, 90, kSame - 1, 200, 55},
        {"a date that fills the row leaves the sender nothing", 90, 400, kSame + 1, 0, 255},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        Row row;
        row.from->setHint({test.fromHint, 16});
        row.date->setHint({test.dateHint, 16});
        row.layout->setCompressionResistance(row.date, test.dateResistance);
        row.place();
        EXPECT_EQ(row.from->width(), test.fromWidth);
        EXPECT_EQ(row.date->width(), test.dateWidth);
        EXPECT_EQ(row.from->x(), 35);
        EXPECT_EQ(row.date->geometry().right() + 1, 300);
    }
}

TEST(ConstraintLayout, TheViewThatHugsLessTakesTheRoom) {
    QWidget container;
    auto* layout = new ConstraintLayout(&container);
    auto* a = new Box({50, 10});
    auto* b = new Box({50, 10});
    layout->addConstraints("H:|[a]-(10)-[b]|", {{"a", a}, {"b", b}});
    layout->setHugging(a, ConstraintLayout::kDefaultHugging - 1);
    layout->setGeometry({0, 0, 200, 20});
    EXPECT_EQ(a->geometry(), QRect(0, 0, 140, 10));
    EXPECT_EQ(b->geometry(), QRect(150, 0, 50, 10));
}

TEST(ConstraintLayout, SizesFollowFromTheStrings) {
    Row row;
    EXPECT_EQ(row.layout->minimumSize(), QSize(134, 0));
    EXPECT_EQ(row.layout->sizeHint(), QSize(634, 50));
    row.place(100);  // narrower than the strings allow: as at the minimum
    EXPECT_EQ(row.trash->geometry(), QRect(94, 30, 20, 20));
    EXPECT_EQ(row.subject->width(), 0);
}

TEST(ConstraintLayout, AStringThatCannotHoldIsNamedAndChangesNothing) {
    Row row;
    auto* stranger = new Box;
    const platform::ViewsByName views{
        {"reply", row.reply}, {"trash", row.trash}, {"stranger", stranger}, {"none", nullptr}};
    for (const char* text : {"H:[reply(21)]",
                             "H:[trash]-(0)-[reply]",
                             "V:[stranger]-(0)-[reply(30)]",
                             "H:[stranger(5)]-(1)-[stranger]",
                             "H:[stranger(-1)]",
                             "H:[reply]-(0)-[nobody]",
                             "H:[none]",
                             "H:[reply"}) {
        SCOPED_TRACE(text);
        try {
            row.layout->addConstraints(text, views);
            ADD_FAILURE() << "was taken";
        } catch (const platform::Exception& exception) {
            EXPECT_THAT(exception.description(),
                        testing::HasSubstr("\"" + std::string(text) + "\""));
        }
        EXPECT_EQ(row.layout->count(), 7);
        EXPECT_EQ(stranger->parentWidget(), nullptr);
        row.place();
        EXPECT_EQ(row.reply->geometry(), QRect(224, 30, 20, 20));
    }
    delete stranger;
}

TEST(ConstraintLayout, AHeightFollowsItsConstraint) {
    QWidget outer;
    outer.setLayoutDirection(Qt::LeftToRight);
    auto* layout = new ConstraintLayout(&outer);
    auto* header = new Box;
    auto* table = new Box({0, 600});
    const platform::ViewsByName views{{"header", header}, {"table", table}};
    layout->addConstraints("H:|-(0)-[table(320)]-(0)-|", views);
    layout->addConstraints("H:|-(0)-[header(320)]-(0)-|", views);
    layout->addConstraints("V:|-(0)-[header(30)]-(5)-[table]-(0)-|", views);
    const auto height = std::make_shared<platform::LayoutConstraint>(50);
    layout->addHeightConstraint(table, height);
    EXPECT_EQ(layout->sizeHint(), QSize(320, 85));
    outer.resize(320, 400);
    outer.show();
    EXPECT_EQ(table->geometry(), QRect(0, 35, 320, 50));
    height->setConstant(120);
    QCoreApplication::processEvents();
    EXPECT_EQ(table->geometry(), QRect(0, 35, 320, 120));
    EXPECT_EQ(layout->minimumSize(), QSize(320, 155));
    height->setConstant(-3);
    EXPECT_EQ(layout->minimumSize(), QSize(320, 35));
    EXPECT_THROW(layout->addHeightConstraint(&outer, height), platform::Exception);
    delete layout;
    height->setConstant(1);  // tells nobody any more
}

TEST(ConstraintLayout, AViewThatIsGoneLeavesTheOthersInPlace) {
    Row row;
    const auto height = std::make_shared<platform::LayoutConstraint>(20);
    row.layout->addHeightConstraint(row.archive, height);
    delete row.archive;
    EXPECT_EQ(row.layout->count(), 6);
    height->setConstant(10);
    row.place();
    EXPECT_EQ(row.reply->geometry(), QRect(224, 30, 20, 20));
    EXPECT_EQ(row.layout->itemAt(6), nullptr);
    EXPECT_EQ(row.layout->itemAt(5)->widget(), row.trash);
}

}  // namespace
}  // namespace quillet::test
