#pragma once

#include <functional>
#include <memory>

namespace quillet::platform {

// A constraint "height = constant" on one view, in points. Main thread only.
//
// constant() is the value set; the layout follows presentedConstant(), which runs after it while
// an animation group that set it is under way.
class LayoutConstraint {
public:
    explicit LayoutConstraint(double constant);
    LayoutConstraint(const LayoutConstraint&) = delete;
    LayoutConstraint& operator=(const LayoutConstraint&) = delete;
    ~LayoutConstraint();

    double constant() const noexcept { return constant_; }
    double presentedConstant() const noexcept { return presented_; }
    // Inside AnimationContext::runGroup the presented value slides to `constant` from where it is,
    // otherwise it jumps.
    void setConstant(double constant);

    // The one layout that follows the constraint; called at each change of presentedConstant().
    void setObserver(std::function<void()> presentedChanged) {
        changed_ = std::move(presentedChanged);
    }

private:
    void present(double value);
    void startSlide(int duration);

    double constant_;
    double presented_;
    std::function<void()> changed_;
    struct Slide;
    std::unique_ptr<Slide> slide_;  // the running animation, if any
};

}  // namespace quillet::platform
