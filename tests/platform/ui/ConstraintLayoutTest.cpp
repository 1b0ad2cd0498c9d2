#include <QCoreApplication>
#include <QWidget>
#include <gmock/gmock.h>

#include "platform/base/Exception.h"
#include "platform/presentation/LayoutConstraint.h"
#include "platform/ui/ConstraintLayout.h"

namespace quillet::test {
namespace {

using platform::ConstraintLayout;

class Box : public QWidget {
public:
    explicit Box(int width = 30) : hint(width, 16) {}
    QSize sizeHint() const override { return hint; }

    QSize hint;
};

// A container with the views "a" and "b".
class ConstraintLayoutTest : public testing::Test {
protected:
    // Adds the string; returns the description of the exception that it raises.
    std::string add(const std::string& text) {
        try {
            layout_->addConstraints(
                text, {{"a", a_}, {"b", b_}, {"stranger", &stranger_}, {"none", nullptr}});
        } catch (const platform::Exception& exception) {
            return exception.description();
        }
        return "";
    }
    void place(int width) {
        layout_->activate();
        layout_->setGeometry({0, 0, width, 60});
    }

    QWidget container_;
    ConstraintLayout* layout_ = new ConstraintLayout(&container_);
    Box* a_ = new Box;
    Box* b_ = new Box;
    Box stranger_;
};

TEST_F(ConstraintLayoutTest, LengthsAreWhatTheStringSays) {
    const struct {
        const char* text;
        int minimum, aWidth, bLeft;  // a and b are 30 points wide if nothing else is said
    } cases[] = {
        {"H:|[a][b]|", 0, 30, 30},
        {"H:|-[a(==35)]-[b]-|", 83, 35, 63},
        {"H:|-(10)-[a(>=11,<=21)]-12-[b]-|", 53, 21, 43},
        {"|-(-5)-[a(40.0)]-(>=7)-[b(20)]-5-|", 67, 40, 275},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.text);
        delete layout_;
        layout_ = new ConstraintLayout(&container_);
        add(row.text);
        EXPECT_EQ(layout_->minimumSize().width(), row.minimum);
        place(300);
        EXPECT_EQ(a_->width(), row.aWidth);
        EXPECT_EQ(b_->x(), row.bLeft);
    }
}

TEST_F(ConstraintLayoutTest, OfTwoViewsInALineTheRightOneGivesWay) {
    constexpr int kSame = ConstraintLayout::kDefaultCompressionResistance;
    const struct {
        const char* name;
        int aHint, bHint, bResistance, aWidth, bWidth;
    } cases[] = {
        {"a long one to a short one", 400, 90, kSame, 165, 90},
        {"one point too long", 166, 90, kSame, 165, 90},
        {"also the right one", 90, 400, kSame, 90, 165},
        {"to one that resists more", 90, 200, kSame + 1, 55, 200},
        {"one that fills the line leaves nothing", 90, 400, kSame + 1, 0, 255},
    };
    add("H:|-(35)-[a]-(>=10)-[b]-(20)-|");
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        a_->hint.setWidth(row.aHint);
        b_->hint.setWidth(row.bHint);
        layout_->setCompressionResistance(b_, row.bResistance);
        place(320);
        EXPECT_EQ(a_->geometry(), QRect(35, 0, row.aWidth, 16));
        EXPECT_EQ(b_->width(), row.bWidth);
    }
}

TEST_F(ConstraintLayoutTest, AStringThatCannotHoldIsNamedAndChangesNothing) {
    add("H:|-(35)-[a]-(>=10)-[b]-(20)-|");
    const std::pair<const char*, const char*> cases[] = {
        {"H:[a]-(0)-[b]", "contradicts"},
        {"V:[stranger]-(0)-[nobody]", "unknown view"},
        {"H:[none]", "unknown view"},
        {"", "offset 0: expected "},
        {"H:|", "offset 3: expected "},
        {"D:[a]", "offset 0: expected "},
        {"[1a]", "offset 1: expected "},
        {"[a(", "offset 3: expected "},
        {"[a(10]", "offset 5: expected "},
        {"[a]-(5)-", "offset 8: expected "},
        {"[a]|x", "offset 4: expected "},
        {"[a(nan)]", "offset 3: expected "},
        {"[a(2000000)]", "offset 3: expected "},
    };
    for (const auto& [text, problem] : cases) {
        SCOPED_TRACE(text);
        EXPECT_THAT(add(text),
                    testing::AllOf(testing::HasSubstr("\"" + std::string(text) + "\""),
                                   testing::HasSubstr(problem)));
    }
    EXPECT_EQ(stranger_.parentWidget(), nullptr);
    place(320);
    EXPECT_EQ(b_->geometry(), QRect(270, 0, 30, 16));
}

TEST_F(ConstraintLayoutTest, AHeightFollowsItsConstraintAndAViewThatIsGoneTakesNoRoom) {
    for (const char* text : {"H:|-(0)-[b(320)]-(0)-|", "V:|-(0)-[a(30)]-(5)-[b]-(0)-|"}) {
        add(text);
    }
    const auto height = std::make_shared<platform::LayoutConstraint>(50);
    layout_->addHeightConstraint(b_, height);
    EXPECT_EQ(layout_->sizeHint(), QSize(320, 85));
    container_.resize(320, 400);
    container_.show();
    EXPECT_EQ(b_->geometry(), QRect(0, 35, 320, 50));
    height->setConstant(120);
    QCoreApplication::processEvents();
    EXPECT_EQ(b_->geometry(), QRect(0, 35, 320, 120));
    delete b_;
    height->setConstant(1);  // nobody follows it any more
    QCoreApplication::processEvents();
    EXPECT_EQ(a_->height(), 30);
    EXPECT_EQ(layout_->count(), 1);
}

}  // namespace
}  // namespace quillet::test
