#include "platform/presentation/AnimationContext.h"

#include <QCoreApplication>
#include <QPointF>
#include <QTimer>
#include <utility>

#include "platform/presentation/AnimationGroup.h"

namespace quillet::platform {

namespace {

// Both belong to the main thread.
std::shared_ptr<AnimationGroup>
    currentGroup;               // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)
bool animationsEnabled = true;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

// Calls on the next turn of the event loop; at once where there is none.
void callFromEventLoop(std::function<void()> completed) {
    QCoreApplication* application = QCoreApplication::instance();
    if (application == nullptr) {
        completed();
        return;
    }
    auto* turn = new QTimer(application);
    turn->setSingleShot(true);
    QObject::connect(turn, &QTimer::timeout, turn, [turn, completed = std::move(completed)] {
        turn->deleteLater();
        completed();
    });
    turn->start(0);
}

// Makes a group the current one for a scope.
class CurrentGroupScope {
public:
    explicit CurrentGroupScope(std::shared_ptr<AnimationGroup> group)
        : outer_(std::exchange(currentGroup, std::move(group))) {}
    ~CurrentGroupScope() { currentGroup = std::move(outer_); }
    CurrentGroupScope(const CurrentGroupScope&) = delete;
    CurrentGroupScope& operator=(const CurrentGroupScope&) = delete;

private:
    std::shared_ptr<AnimationGroup> outer_;
};

}  // namespace

AnimationGroup::~AnimationGroup() {
    if (completed_) {
        callFromEventLoop(std::move(completed_));
    }
}

std::shared_ptr<AnimationGroup> AnimationGroup::current() {
    return currentGroup;
}

QEasingCurve easeInOut() {
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment(QPointF(0.42, 0), QPointF(0.58, 1), QPointF(1, 1));
    return curve;
}

void AnimationContext::runGroup(const std::function<void()>& changes,
                                std::function<void()> completed) {
    auto group = std::make_shared<AnimationGroup>(std::move(completed));
    {
        const CurrentGroupScope scope(group);
        if (changes) {
            changes();
        }
    }
    const bool nothingMoves = group.use_count() == 1;
    if (!nothingMoves) {
        return;
    }
    if (const std::function<void()> done = group->takeCompletion()) {
        done();
    }
}

int AnimationContext::duration() {
    // Without an application there is no event loop that could move anything.
    return animationsEnabled && QCoreApplication::instance() != nullptr ? kDefaultDuration : 0;
}

void AnimationContext::setEnabled(bool enabled) {
    animationsEnabled = enabled;
}

}  // namespace quillet::platform
