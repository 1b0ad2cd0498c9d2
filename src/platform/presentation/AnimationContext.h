#pragma once

#include <functional>

namespace quillet::platform {

// Groups changes that the user sees as one movement. Main thread only.
class AnimationContext {
public:
    static constexpr int kDefaultDuration = 250;  // milliseconds

    // Runs `changes` at once. What they set on layout constraints slides there in the default
    // duration.
    static void runGroup(const std::function<void()>& changes);
    // Whether the changes of a group are running.
    static bool isInGroup();

    // Milliseconds that a movement takes if it begins now: 0 when animations are disabled (the user
    // asks for reduced motion, or a picture is taken) or when there is no application object.
    static int duration();
    static void setEnabled(bool enabled);
};

}  // namespace quillet::platform
