#pragma once

#include <functional>

namespace quillet::platform {

// Groups changes that the user sees as one movement. Main thread only.
class AnimationContext {
public:
    static constexpr int kDefaultDuration = 250;  // milliseconds

    // Runs `changes` at once. Layout constraints that they set slide there in the default duration.
    static void runGroup(const std::function<void()>& changes);
    // Whether it is called inside `changes`.
    static bool isInGroup();

    // The milliseconds of a movement that begins now; 0 if animations are disabled (for reduced
    // motion or for a picture) or the application object is missing.
    static int duration();
    static void setEnabled(bool enabled);
};

}  // namespace quillet::platform
