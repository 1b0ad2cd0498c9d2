#pragma once

#include <functional>
#include <utility>

#include "platform/presentation/ValueAnimation.h"

namespace quillet::platform {

// A constraint "height = constant" on one view, in points. Main thread only.
//
// constant() is the value set. The layout follows presentedConstant(), which slides there when the
// constant was set in an animation group.
class LayoutConstraint {
public:
    explicit LayoutConstraint(double constant) : constant_(constant), presented_(constant) {}

    double constant() const noexcept { return constant_; }
    double presentedConstant() const noexcept { return presented_; }
    // Inside AnimationContext::runGroup the presented value slides to `constant` from where it is,
    // otherwise it jumps.
    void setConstant(double constant);

    // Sets the one layout that follows the constraint: it is called at each change of
    // presentedConstant().
    void setObserver(std::function<void()> presentedChanged) {
        changed_ = std::move(presentedChanged);
    }

private:
    void present(double value);

    double constant_;
    double presented_;
    std::function<void()> changed_;
    ValueAnimation slide_;
};

}  // namespace quillet::platform
