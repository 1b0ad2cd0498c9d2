#pragma once

#include <QCoreApplication>
#include <QVariantAnimation>

namespace quillet::test {

// The animation under way, which a test can pause and set to a time; null when nothing moves.
inline QVariantAnimation* runningAnimation() {
    for (auto* animation : QCoreApplication::instance()->findChildren<QVariantAnimation*>()) {
        if (animation->state() != QAbstractAnimation::Stopped) {
            return animation;
        }
    }
    return nullptr;
}

}  // namespace quillet::test
