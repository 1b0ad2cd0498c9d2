#include <QCoreApplication>
#include <QWidget>
#include <functional>
#include <gmock/gmock.h>

#include "platform/base/Exception.h"
#include "platform/presentation/LayoutConstraint.h"
#include "platform/ui/ConstraintLayout.h"
#include "platform/ui/VisualFormat.h"

namespace quillet::test {
namespace {

using platform::ConstraintLayout;

// The description of the exception that the action raises.
std::string raisedBy(const std::function<void()>& action) {
    try {
        action();
    } catch (const platform::Exception& exception) {
        return exception.description();
    }
    return "nothing";
}

class Box : public QWidget {
public:
    explicit Box(QSize size = {}) : hint(size) {}
    QSize sizeHint() const override { return hint; }

    QSize hint;
};

// The first line of a message line.
struct Line {
    Line() {
        for (const char* text : {"H:|-(35)-[from]-(>=10)-[date]-(20)-|",
                                 "V:|-(10)-[from(20)]",
                                 "V:|-(10)-[date(20)]"}) {
            layout->addConstraints(text, {{"from", from}, {"date", date}});
        }
    }

    void place(int width = 320) {
        layout->activate();
        layout->setGeometry({0, 0, width, 60});
    }

    QWidget container;
    ConstraintLayout* layout = new ConstraintLayout(&container);
    Box* from = new Box({80, 16});
    Box* date = new Box({40, 16});
};

TEST(ConstraintLayout, LengthsAreWhatTheStringSays) {
    struct Case {
        const char* text;
        int minimum, aWidth, bLeft;  // a and b are 30 points wide where nothing else is said
    };
    const Case cases[] = {
        {"H:|[a][b]|", 0, 30, 30},
        {"H:|-[a(==35)]-[b]-|", 83, 35, 63},
        {"H:|-(10)-[a(>=11,<=21)]-12-[b]-|", 53, 21, 43},
        {"|-(-5)-[a(40.0)]-(>=7)-[b(20)]-5-|", 67, 40, 275},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.text);
        QWidget container;
        auto* layout = new ConstraintLayout(&container);
        auto* a = new Box({30, 10});
        auto* b = new Box({30, 10});
        layout->addConstraints(test.text, {{"a", a}, {"b", b}});
        EXPECT_EQ(layout->minimumSize().width(), test.minimum);
        layout->setGeometry({0, 0, 300, 20});
        EXPECT_EQ(a->width(), test.aWidth);
        EXPECT_EQ(b->x(), test.bLeft);
    }
}

TEST(ConstraintLayout, OfTwoViewsInALineTheRightOneGivesWay) {
    struct Case {
        const char* name;
        int fromHint, dateHint, dateResistance, fromWidth, dateWidth;
    };
    constexpr int kSame = ConstraintLayout::kDefaultCompressionResistance;
    const Case cases[] = {
        {"a long sender to the date", 400, 90, kSame, 165, 90},
        {"one point too long", 166, 90, kSame, 165, 90},
        {"a long date to the sender", 90, 400, kSame, 90, 165},
        {"the sender to a date that resists more", 90, 200, kSame + 1, 55, 200},
        {"a date that fills the row leaves the sender nothing", 90, 400, kSame + 1, 0, 255},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        Line line;
        line.from->hint = {test.fromHint, 16};
        line.date->hint = {test.dateHint, 16};
        line.layout->setCompressionResistance(line.date, test.dateResistance);
        line.place();
        EXPECT_EQ(line.from->width(), test.fromWidth);
        EXPECT_EQ(line.date->width(), test.dateWidth);
        EXPECT_EQ(line.from->x(), 35);
    }
}

TEST(ConstraintLayout, AStringThatCannotHoldIsNamedAndChangesNothing) {
    Line line;
    Box stranger;
    const platform::ViewsByName views{
        {"from", line.from}, {"date", line.date}, {"stranger", &stranger}, {"none", nullptr}};
    for (const char* text : {"H:[from]-(0)-[date]",
                             "V:[stranger]-(0)-[date(30)]",
                             "H:[date]-(0)-[nobody]",
                             "H:[none]",
                             "H:[date"}) {
        SCOPED_TRACE(text);
        EXPECT_THAT(raisedBy([&] { line.layout->addConstraints(text, views); }),
                    testing::HasSubstr("\"" + std::string(text) + "\""));
        EXPECT_EQ(stranger.parentWidget(), nullptr);
        line.place();
        EXPECT_EQ(line.date->geometry(), QRect(260, 10, 40, 20));
    }
}

TEST(ConstraintLayout, AHeightFollowsItsConstraintAndAViewThatIsGoneTakesNoRoom) {
    QWidget outer;
    auto* layout = new ConstraintLayout(&outer);
    auto* header = new Box;
    auto* table = new Box({0, 600});
    const platform::ViewsByName views{{"header", header}, {"table", table}};
    layout->addConstraints("H:|-(0)-[table(320)]-(0)-|", views);
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
    delete table;
    height->setConstant(1);  // tells nobody any more
    QCoreApplication::processEvents();
    EXPECT_EQ(header->height(), 30);
    EXPECT_EQ(layout->count(), 1);
}

TEST(VisualFormat, NamesThePlaceOfWhatCannotBeRead) {
    const std::pair<std::string, int> cases[] = {{"", 0},
                                                 {"H:|", 3},
                                                 {"D:[a]", 0},
                                                 {"[1a]", 1},
                                                 {"[a(", 3},
                                                 {"[a(10]", 5},
                                                 {"[a]-(5)-", 8},
                                                 {"[a]|x", 4},
                                                 {"[a(nan)]", 3},
                                                 {"[a(2000000)]", 3}};
    for (const auto& [text, offset] : cases) {
        SCOPED_TRACE(text);
        EXPECT_THAT(raisedBy([&text = text] { platform::parseVisualFormat(text); }),
                    testing::HasSubstr("offset " + std::to_string(offset) + ": expected "));
    }
}

}  // namespace
}  // namespace quillet::test
