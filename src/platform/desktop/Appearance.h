#pragma once

#include <functional>
#include <memory>

namespace quillet::platform {

enum class Look { Light, Dark };

// The desktop's settings for the look: light or dark, and reduced motion. Main thread only.
//
// The desktop's settings portal is asked without waiting. Until it answers, and without a portal,
// the lightness of the toolkit's palette decides the look.
class Appearance {
public:
    // `changed` is called, from the event loop, whenever look() or reducedMotion() changes.
    explicit Appearance(std::function<void()> changed);
    ~Appearance();

    Look look() const;
    bool reducedMotion() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
