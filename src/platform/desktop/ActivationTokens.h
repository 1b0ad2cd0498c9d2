#pragma once

#include <memory>
#include <optional>
#include <string>

namespace quillet::platform {

// Makes the tokens with which a program lets another one come to the front. From its making on it
// watches for the user's input, whose time a token tells. Main thread only.
class ActivationTokens {
public:
    ActivationTokens();
    ~ActivationTokens();
    ActivationTokens(const ActivationTokens&) = delete;
    ActivationTokens& operator=(const ActivationTokens&) = delete;

    // A startup identifier of X11, NAME_TIMEmilliseconds; each is another one. None on Wayland,
    // whose compositor makes the tokens: the toolkit offers no way to ask for one.
    std::optional<std::string> next();

private:
    class InputClock;
    std::unique_ptr<InputClock> clock_;
    unsigned count_ = 0;
};

}  // namespace quillet::platform
