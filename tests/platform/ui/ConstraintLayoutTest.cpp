#include <QWidget>
#include <gmock/gmock.h>

#include "platform/base/Exception.h"
#include "platform/presentation/AnimationContext.h"
#include "platform/presentation/LayoutConstraint.h"
#include "platform/ui/ConstraintLayout.h"
#include "tests/platform/ui/Rendering.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

using platform::AnimationContext;
using platform::ConstraintLayout;
using platform::LayoutConstraint;

struct Box : QWidget {
    QSize sizeHint() const override { return hint; }
    QSize hint{30, 16};
};

// A container that places the views "a" and "b".
struct Container : QWidget {
    void add(const std::string& text) {
        layout->addConstraints(text, {{"a", a}, {"b", b}, {"stranger", &stranger}, {"none", {}}});
    }

    ConstraintLayout* layout = new ConstraintLayout(this);
    Box* a = new Box;
    Box* b = new Box;
    QWidget stranger;
};

TEST(ConstraintLayout, LengthsAreWhatTheStringSaysAndOfTwoOpenViewsTheRightOneGivesWay) {
    constexpr int kSame = ConstraintLayout::kDefaultCompressionResistance;
    constexpr const char* kLine = "H:|-(35)-[a]-(>=10)-[b]-(20)-|";
    const struct {
        const char* name;
        const char* text;
        int aHint, bHint, bResistance;
        int minimum, aWidth, bLeft, bWidth;  // the widths in a container of 320 points
    } cases[] = {
        {"no gaps", "H:|[a][b]|", 30, 30, kSame, 0, 30, 30, 290},
        {"standard gaps", "H:|-[a(==35)]-[b]-|", 30, 30, kSame, 83, 35, 63, 237},
        {"bounds", "H:|-(10)-[a(>=11,<=21)]-12-[b]-|", 30, 30, kSame, 53, 21, 43, 257},
        {"any gap", "|-(-5)-[a(40.0)]-(>=7)-[b(20)]-5-|", 30, 30, kSame, 67, 40, 295, 20},
        {"a long one gives way to a short one", kLine, 400, 90, kSame, 65, 165, 210, 90},
        {"one point too long", kLine, 166, 90, kSame, 65, 165, 210, 90},
        {"also the right one", kLine, 90, 400, kSame, 65, 90, 135, 165},
        {"to one that resists more", kLine, 90, 200, kSame + 1, 65, 55, 100, 200},
        {"one that fills the line leaves nothing", kLine, 90, 400, kSame + 1, 65, 0, 45, 255},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        Container views;
        views.a->hint.setWidth(row.aHint);
        views.b->hint.setWidth(row.bHint);
        views.add(row.text);
        views.layout->setCompressionResistance(views.b, row.bResistance);
        EXPECT_EQ(views.layout->minimumSize().width(), row.minimum);
        views.layout->setGeometry({0, 0, 320, 60});
        EXPECT_EQ(views.a->geometry().size(), QSize(row.aWidth, 16));
        EXPECT_EQ(views.b->geometry(), QRect(row.bLeft, 0, row.bWidth, 16));
    }
}

TEST(ConstraintLayout, AStringThatCannotHoldIsNamedAndChangesNothing) {
    Container views;
    views.add("H:|-(35)-[a]-(>=10)-[b]-(20)-|");
    for (const auto& [text, problem] : {
             std::pair("H:[a]-(0)-[b]", "\"H:[a]-(0)-[b]\" contradicts"),
             {"V:[stranger]-(0)-[nobody]", "unknown view"},
             {"H:[none]", "unknown view"},
             {"", "\"\", offset 0: expected "},
             {"H:|", "offset 3: expected "},
             {"[1a]", "offset 1: expected "},
             {"[a(10]", "offset 5: expected "},
             {"[a]-(5)-", "offset 8: expected "},
             {"[a]|x", "offset 4: expected "},
             {"[a(nan)]", "offset 3: expected "},
             {"[a(2000000)]", "offset 3: expected "},
         }) {
        EXPECT_THAT(([&, text = text] { views.add(text); }),
                    testing::Throws<platform::Exception>(testing::Property(
                        &platform::Exception::description, testing::HasSubstr(problem))));
    }
    EXPECT_EQ(views.stranger.parentWidget(), nullptr);
    views.layout->setGeometry({0, 0, 320, 60});
    EXPECT_EQ(views.b->geometry(), QRect(270, 0, 30, 16));
}

TEST(ConstraintLayout, AHeightFollowsItsConstraintAndAViewThatIsGoneTakesNoRoom) {
    Container views;
    views.add("H:|-(0)-[b(320)]-(0)-|");
    views.add("V:|-(0)-[a(30)]-(5)-[b]-(0)-|");
    const auto height = std::make_shared<LayoutConstraint>(50);
    views.layout->addHeightConstraint(views.b, height);
    EXPECT_EQ(views.layout->sizeHint(), QSize(320, 85));
    views.show();
    height->setConstant(120);
    QCoreApplication::processEvents();
    EXPECT_EQ(views.b->geometry(), QRect(0, 35, 320, 120));
    delete views.b;
    height->setConstant(1);  // nobody follows it any more
    QCoreApplication::processEvents();
    EXPECT_EQ(views.a->height(), 30);
    EXPECT_EQ(views.layout->count(), 1);
}

// Sets the constant in a group and holds the animation still; returns what moves.
QVariantAnimation* slide(LayoutConstraint& constraint, double constant) {
    AnimationContext::runGroup([&] {
        AnimationContext::runGroup([] {});  // ends within the outer one
        constraint.setConstant(constant);
    });
    if (QVariantAnimation* animation = runningAnimation()) {
        animation->pause();
    }
    return runningAnimation();
}

TEST(LayoutConstraint, SlidesInsideAGroupSlowAtBothEndsAndStartsFromWhereItIs) {
    LayoutConstraint constraint(50);
    QVariantAnimation* movement = slide(constraint, 150);
    ASSERT_NE(movement, nullptr);
    EXPECT_EQ(constraint.constant(), 150);
    movement->setCurrentTime(25);
    EXPECT_LT(constraint.presentedConstant(), 55);
    movement->setCurrentTime(225);
    EXPECT_GT(constraint.presentedConstant(), 145);
    EXPECT_EQ(slide(constraint, 150)->currentTime(), 225) << "on the way there already";
    movement->setCurrentTime(125);
    EXPECT_NEAR(constraint.presentedConstant(), 100, 0.5);
    slide(constraint, 20.3)->resume();
    EXPECT_NEAR(constraint.presentedConstant(), 100, 0.5);
    EXPECT_TRUE(waitUntil([] { return runningAnimation() == nullptr; }));
    EXPECT_EQ(constraint.presentedConstant(), 20.3);
}

TEST(LayoutConstraint, JumpsOutsideAGroupAndWhereAnimationsAreOffAndMayDieWhileItSlides) {
    auto constraint = std::make_unique<LayoutConstraint>(50);
    slide(*constraint, 150);
    constraint->setConstant(120);
    EXPECT_EQ(constraint->presentedConstant(), 120);
    AnimationContext::setEnabled(false);
    EXPECT_EQ(slide(*constraint, 150), nullptr);
    AnimationContext::setEnabled(true);
    EXPECT_EQ(constraint->presentedConstant(), 150);
    slide(*constraint, 60)->resume();
    constraint.reset();
    EXPECT_EQ(runningAnimation(), nullptr);
}

}  // namespace
}  // namespace quillet::test
