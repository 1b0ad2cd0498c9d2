#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace quillet::platform {

// Turns the signals that ask a program to end (SIGTERM, SIGINT, SIGHUP) into a call from the event
// loop. Those that the program was started to ignore stay ignored, and programs started from here
// inherit nothing. One at a time; main thread only.
class StopSignals {
public:
    // From now on the signals no longer end the program, except that it is gone with status 0 once
    // `limit` has passed since the first one, whatever it does then.
    explicit StopSignals(std::optional<std::chrono::milliseconds> limit = std::nullopt);
    // From now on they do again. A limit that runs goes on.
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    // Calls `stop` when signals come, those that came before included. With an application object.
    void connect(std::function<void()> stop);
    // Does what one of the signals does, for somebody else who asks the program to end.
    static void request() noexcept;
    // The signal that came last since the last one was made; 0 for none.
    static int received() noexcept;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
