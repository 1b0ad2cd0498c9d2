#include <gtest/gtest.h>

#include "platform/presentation/AnimationContext.h"
#include "platform/presentation/LayoutConstraint.h"
#include "tests/platform/presentation/RunningAnimation.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

using platform::AnimationContext;
using platform::LayoutConstraint;

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
