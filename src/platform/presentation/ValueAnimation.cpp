#include "platform/presentation/ValueAnimation.h"

#include <QCoreApplication>
#include <QEasingCurve>
#include <QPointF>
#include <QPointer>
#include <QVariantAnimation>
#include <utility>

namespace quillet::platform {

// The animation belongs to the application, which may end first. It is deleted from the event loop,
// because it may be stopped inside one of its own signals.
struct ValueAnimation::State {
    QPointer<QVariantAnimation> running;
};

ValueAnimation::ValueAnimation() : state_(std::make_unique<State>()) {}

ValueAnimation::~ValueAnimation() {
    stop();
}

void ValueAnimation::start(double from,
                           double to,
                           int milliseconds,
                           const std::function<void(double)>& changed,
                           const std::function<void()>& ended) {
    stop();
    QEasingCurve easeInOut(QEasingCurve::BezierSpline);
    easeInOut.addCubicBezierSegment(QPointF(0.42, 0), QPointF(0.58, 1), QPointF(1, 1));
    auto* animation = new QVariantAnimation(QCoreApplication::instance());
    animation->setEasingCurve(easeInOut);
    animation->setDuration(milliseconds);
    animation->setStartValue(from);
    animation->setEndValue(to);
    QObject::connect(
        animation, &QVariantAnimation::valueChanged, animation, [changed](const QVariant& value) {
            changed(value.toDouble());
        });
    if (ended) {
        QObject::connect(animation, &QVariantAnimation::finished, animation, ended);
    }
    state_->running = animation;
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void ValueAnimation::stop() {
    if (QVariantAnimation* animation = std::exchange(state_->running, nullptr)) {
        animation->disconnect();
        animation->stop();
    }
}

bool ValueAnimation::isRunning() const {
    return state_->running && state_->running->state() != QAbstractAnimation::Stopped;
}

}  // namespace quillet::platform
