#pragma once

#include <memory>
#include <optional>
#include <string>

namespace quillet::platform {

// Makes the tokens with which a program lets another one come to the front. A token holds the time
// of the user's input, which is watched from construction on. Main thread only.
class ActivationTokens {
public:
    ActivationTokens();
    ~ActivationTokens();
    ActivationTokens(const ActivationTokens&) = delete;
    ActivationTokens& operator=(const ActivationTokens&) = delete;

    // A unique startup identifier of X11, NAME_TIMEmilliseconds. None on Wayland, where the
    // compositor makes the tokens and the toolkit offers no way to ask for one.
    std::optional<std::string> next();

private:
    class InputClock;
    std::unique_ptr<InputClock> clock_;
    unsigned count_ = 0;
};

}  // namespace quillet::platform
