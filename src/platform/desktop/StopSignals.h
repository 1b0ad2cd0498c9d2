#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace quillet::platform {

// Turns the signals that ask a program to end (SIGTERM, SIGINT, SIGHUP) into a call from the event
// loop. Signals that were ignored when the program started stay ignored, and programs started from
// here inherit nothing. At most one object at a time; main thread only.
class StopSignals {
public:
    // From now on the signals no longer end the program. With a `limit`, the program ends with
    // status 0 in any case once that time has passed since the first signal.
    explicit StopSignals(std::optional<std::chrono::milliseconds> limit = std::nullopt);
    // From now on the signals end the program again. A limit that has begun still counts.
    ~StopSignals();

    // Calls `stop` when signals come, including those that came before. Needs the application
    // object.
    void connect(std::function<void()> stop);
    // Acts as if one of the signals had come.
    static void request() noexcept;
    // The last signal since the last object was made; 0: none.
    static int received() noexcept;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
