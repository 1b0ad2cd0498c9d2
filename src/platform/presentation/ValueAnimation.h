#pragma once

#include <functional>
#include <memory>

namespace quillet::platform {

// Moves a number from one value to another, slowly at both ends. Main thread only.
class ValueAnimation {
public:
    ValueAnimation();
    ~ValueAnimation();

    // Replaces a running movement. The event loop calls `changed` with each value, the last one
    // being `to` except for rounding, then `ended` once. Both may stop, restart or destroy the
    // animation. Needs an application object; the movement ends silently with it.
    void start(double from,
               double to,
               int milliseconds,
               const std::function<void(double)>& changed,
               const std::function<void()>& ended = {});
    // Ends the movement where it is without calling anything.
    void stop();
    bool isRunning() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
