#include "platform/presentation/LayoutConstraint.h"

#include "platform/presentation/AnimationContext.h"

namespace quillet::platform {

void LayoutConstraint::setConstant(double constant) {
    const int duration = AnimationContext::isInGroup() ? AnimationContext::duration() : 0;
    const bool onTheWay = slide_.isRunning() && constant == constant_;
    constant_ = constant;
    if (duration == 0 || presented_ == constant) {
        slide_.stop();
        if (presented_ != constant) {
            present(constant);
        }
    } else if (!onTheWay) {
        slide_.start(
            presented_,
            constant,
            duration,
            [this](double value) { present(value); },
            [this] { present(constant_); });  // the last step may be rounded
    }
}

void LayoutConstraint::present(double value) {
    presented_ = value;
    if (changed_) {
        changed_();
    }
}

}  // namespace quillet::platform
