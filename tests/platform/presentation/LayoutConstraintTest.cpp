#include <gtest/gtest.h>
#include <optional>

#include "platform/presentation/AnimationContext.h"
#include "platform/presentation/LayoutConstraint.h"
#include "tests/platform/presentation/RunningAnimation.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

using platform::AnimationContext;
using platform::LayoutConstraint;

// Sets the constant in a group and holds the animation still.
void slide(LayoutConstraint& constraint, double constant) {
    AnimationContext::runGroup([&] {
        AnimationContext::runGroup([] {});  // ends within the outer one
        constraint.setConstant(constant);
    });
    if (QVariantAnimation* animation = runningAnimation()) {
        animation->pause();
    }
}

TEST(LayoutConstraint, SlidesInsideAGroupSlowAtBothEndsAndStartsFromWhereItIs) {
    LayoutConstraint constraint(50);
    slide(constraint, 150);
    EXPECT_EQ(constraint.constant(), 150);
    runningAnimation()->setCurrentTime(25);
    EXPECT_LT(constraint.presentedConstant(), 55);
    runningAnimation()->setCurrentTime(225);
    EXPECT_GT(constraint.presentedConstant(), 145);
    slide(constraint, 150);
    EXPECT_EQ(runningAnimation()->currentTime(), 225) << "on the way there already";
    runningAnimation()->setCurrentTime(125);
    EXPECT_NEAR(constraint.presentedConstant(), 100, 0.5);
    slide(constraint, 20.3);
    EXPECT_NEAR(constraint.presentedConstant(), 100, 0.5);
    runningAnimation()->resume();
    EXPECT_TRUE(waitUntil([] { return runningAnimation() == nullptr; }));
    EXPECT_EQ(constraint.presentedConstant(), 20.3);
}

TEST(LayoutConstraint, JumpsOutsideAGroupAndWhereAnimationsAreOff) {
    LayoutConstraint constraint(50);
    slide(constraint, 150);
    constraint.setConstant(120);
    EXPECT_EQ(constraint.presentedConstant(), 120);
    EXPECT_EQ(runningAnimation(), nullptr);
    AnimationContext::setEnabled(false);
    slide(constraint, 150);
    AnimationContext::setEnabled(true);
    EXPECT_EQ(constraint.presentedConstant(), 150);
}

TEST(LayoutConstraint, MayDieWhileItSlides) {
    std::optional<LayoutConstraint> constraint(std::in_place, 50);
    slide(*constraint, 150);
    runningAnimation()->setCurrentTime(100);
    runningAnimation()->resume();
    constraint.reset();
    EXPECT_EQ(runningAnimation(), nullptr);
}

}  // namespace
}  // namespace quillet::test
