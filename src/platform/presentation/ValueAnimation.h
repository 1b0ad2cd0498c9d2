#pragma once

#include <functional>
#include <memory>

namespace quillet::platform {

// Moves a number from one value to another, slowly at both ends. Main thread only.
class ValueAnimation {
public:
    ValueAnimation();
    ValueAnimation(const ValueAnimation&) = delete;
    ValueAnimation& operator=(const ValueAnimation&) = delete;
    ~ValueAnimation();

    // Replaces a running movement. `changed` is called from the event loop with each value on the
    // way, the last one `to` but for rounding, then `ended` once. Both may stop, restart or destroy
    // the animation. Needs the application object, and ends silently with it.
    void start(double from,
               double to,
               int milliseconds,
               const std::function<void(double)>& changed,
               const std::function<void()>& ended = {});
    // Ends the movement where it is and calls nothing.
    void stop();
    bool isRunning() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
