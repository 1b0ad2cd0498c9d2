#pragma once

#include <QEasingCurve>
#include <functional>
#include <memory>

namespace quillet::platform {

// One group of changes. Every movement that belongs to it holds it; when the last one lets go, the
// completion is called from the event loop. Main thread only.
class AnimationGroup {
public:
    explicit AnimationGroup(std::function<void()> completed) : completed_(std::move(completed)) {}
    ~AnimationGroup();
    AnimationGroup(const AnimationGroup&) = delete;
    AnimationGroup& operator=(const AnimationGroup&) = delete;

    // The group whose changes run just now, or null.
    static std::shared_ptr<AnimationGroup> current();

    // The completion, which the group then no longer calls by itself.
    std::function<void()> takeCompletion() { return std::exchange(completed_, nullptr); }

private:
    std::function<void()> completed_;
};

// The curve of every movement: ease in and out.
QEasingCurve easeInOut();

}  // namespace quillet::platform
