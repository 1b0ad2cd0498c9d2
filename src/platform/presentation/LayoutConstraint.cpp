#include "platform/presentation/LayoutConstraint.h"

#include <QCoreApplication>
#include <QPointer>
#include <QVariantAnimation>
#include <utility>
#include <vector>

#include "platform/presentation/AnimationContext.h"
#include "platform/presentation/AnimationGroup.h"

namespace quillet::platform {

// The animation belongs to the application, which may end before the constraint does. It is
// released through the event loop, since a slide may end inside the animation's own signal.
struct LayoutConstraint::Slide {
    Slide() = default;
    Slide(const Slide&) = delete;
    Slide& operator=(const Slide&) = delete;
    ~Slide() {
        if (animation) {
            animation->disconnect();
            animation->stop();
            animation->deleteLater();
        }
    }

    QPointer<QVariantAnimation> animation = new QVariantAnimation(QCoreApplication::instance());
    std::vector<std::shared_ptr<AnimationGroup>> groups;  // that wait for its end
};

LayoutConstraint::LayoutConstraint(double constant) : constant_(constant), presented_(constant) {}

LayoutConstraint::~LayoutConstraint() = default;

void LayoutConstraint::setConstant(double constant) {
    const std::shared_ptr<AnimationGroup> group = AnimationGroup::current();
    const int duration = group ? AnimationContext::duration() : 0;
    const bool onTheWay = slide_ && constant == constant_;
    constant_ = constant;
    if (duration == 0 || presented_ == constant) {
        slide_.reset();
        if (presented_ != constant) {
            present(constant);
        }
        return;
    }
    if (!onTheWay) {
        startSlide(duration);
    }
    slide_->groups.push_back(group);
}

void LayoutConstraint::startSlide(int duration) {
    slide_ = std::make_unique<Slide>();
    QVariantAnimation* animation = slide_->animation;
    animation->setDuration(duration);
    animation->setEasingCurve(easeInOut());
    animation->setStartValue(presented_);
    animation->setEndValue(constant_);
    QObject::connect(
        animation, &QVariantAnimation::valueChanged, animation, [this](const QVariant& value) {
            present(value.toDouble());
        });
    QObject::connect(animation, &QVariantAnimation::finished, animation, [this] {
        slide_.reset();
        present(constant_);
    });
    animation->start();
}

void LayoutConstraint::present(double value) {
    presented_ = value;
    if (changed_) {
        changed_();
    }
}

}  // namespace quillet::platform
