#pragma once

#include <functional>

namespace quillet::platform {

// Groups changes that the user sees as one movement. Main thread only.
class AnimationContext {
public:
    static constexpr int kDefaultDuration = 250;  // milliseconds, ease in and out

    // Runs `changes` at once; what it sets on layout constraints slides there in the default
    // duration. `completed` runs when the movement has ended (from the event loop; at once where
    // nothing moves).
    static void runGroup(const std::function<void()>& changes,
                         std::function<void()> completed = {});

    // Milliseconds that a movement begun now takes: 0 where animations are off (the user asks for
    // reduced motion, or a picture is taken).
    static int duration();
    static void setEnabled(bool enabled);
};

}  // namespace quillet::platform
