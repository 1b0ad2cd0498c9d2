#include "platform/presentation/AnimationContext.h"

#include <QCoreApplication>
#include <QScopedValueRollback>

namespace quillet::platform {

namespace {

// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables): both belong to the main thread
bool inGroup = false;
bool animationsEnabled = true;
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

}  // namespace

void AnimationContext::runGroup(const std::function<void()>& changes) {
    const QScopedValueRollback group(inGroup, true);
    changes();
}

bool AnimationContext::isInGroup() {
    return inGroup;
}

int AnimationContext::duration() {
    return animationsEnabled && QCoreApplication::instance() != nullptr ? kDefaultDuration : 0;
}

void AnimationContext::setEnabled(bool enabled) {
    animationsEnabled = enabled;
}

}  // namespace quillet::platform
