#include <QCoreApplication>
#include <QVariantAnimation>
#include <gtest/gtest.h>

#include "platform/presentation/AnimationContext.h"
#include "platform/presentation/LayoutConstraint.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

using platform::AnimationContext;
using platform::LayoutConstraint;

class LayoutConstraintTest : public testing::Test {
protected:
    ~LayoutConstraintTest() override { AnimationContext::setEnabled(true); }

    // Sets the constant in a group and holds the animation still.
    void slideTo(double constant) {
        AnimationContext::runGroup([&] { constraint_->setConstant(constant); },
                                   [this] { ++completions_; });
        if (QVariantAnimation* running = animation()) {
            running->pause();
        }
    }

    static QVariantAnimation* animation() {
        for (auto* animation : QCoreApplication::instance()->findChildren<QVariantAnimation*>()) {
            if (animation->state() != QAbstractAnimation::Stopped) {
                return animation;
            }
        }
        return nullptr;
    }

    std::unique_ptr<LayoutConstraint> constraint_ = std::make_unique<LayoutConstraint>(50);
    int completions_ = 0;
};

TEST_F(LayoutConstraintTest, SlidesInsideAGroupSlowAtBothEnds) {
    slideTo(150);
    animation()->setCurrentTime(25);
    EXPECT_LT(constraint_->presentedConstant(), 55);
    animation()->setCurrentTime(125);
    EXPECT_NEAR(constraint_->presentedConstant(), 100, 0.5);
    animation()->setCurrentTime(225);
    EXPECT_GT(constraint_->presentedConstant(), 145);
    animation()->resume();
    EXPECT_TRUE(waitUntil([this] { return completions_ == 1; }));
    EXPECT_EQ(constraint_->presentedConstant(), 150);
}

TEST_F(LayoutConstraintTest, ASetDuringASlideStartsFromWhereItIs) {
    slideTo(150);
    animation()->setCurrentTime(125);
    const double present = constraint_->presentedConstant();
    slideTo(0);
    EXPECT_NEAR(constraint_->presentedConstant(), present, 1e-9);
    EXPECT_TRUE(waitUntil([this] { return completions_ == 1; })) << "the first movement has ended";
    constraint_->setConstant(77);
    EXPECT_EQ(constraint_->presentedConstant(), 77);
    EXPECT_TRUE(waitUntil([this] { return completions_ == 2; }));
}

TEST_F(LayoutConstraintTest, JumpsOutsideAGroupAndWhereAnimationsAreOff) {
    constraint_->setConstant(120);
    EXPECT_EQ(constraint_->presentedConstant(), 120);
    AnimationContext::setEnabled(false);
    slideTo(150);
    EXPECT_EQ(constraint_->presentedConstant(), 150);
    EXPECT_EQ(completions_, 1);
}

TEST_F(LayoutConstraintTest, MayDieWhileItSlides) {
    slideTo(150);
    animation()->setCurrentTime(100);
    animation()->resume();
    constraint_.reset();
    EXPECT_EQ(animation(), nullptr);
    EXPECT_TRUE(waitUntil([this] { return completions_ == 1; }));
}

TEST_F(LayoutConstraintTest, GroupsNestAndEndWithTheirChanges) {
    int innerCompletions = 0;
    AnimationContext::runGroup(
        [&] {
            AnimationContext::runGroup([] {}, [&] { ++innerCompletions; });
            constraint_->setConstant(20);
        },
        [this] { ++completions_; });
    EXPECT_EQ(innerCompletions, 1) << "nothing moved in it";
    EXPECT_EQ(constraint_->presentedConstant(), 50);
    EXPECT_TRUE(waitUntil([this] { return completions_ == 1; }));
    EXPECT_EQ(constraint_->presentedConstant(), 20);
}

}  // namespace
}  // namespace quillet::test
