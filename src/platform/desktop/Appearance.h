#pragma once

#include <functional>
#include <memory>

namespace quillet::platform {

enum class Look { Light, Dark };

// What the user asks of the desktop's look: light or dark, and less motion. Main thread only.
//
// The desktop's settings portal is asked without waiting; until it answers, and where there is
// none, the look is told by the lightness of the toolkit's palette.
class Appearance {
public:
    // `changed` is called, from the event loop, whenever look() or reducedMotion() changes.
    explicit Appearance(std::function<void()> changed);
    ~Appearance();
    Appearance(const Appearance&) = delete;
    Appearance& operator=(const Appearance&) = delete;

    Look look() const;
    bool reducedMotion() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
