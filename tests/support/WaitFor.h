#pragma once

#include <chrono>
#include <thread>

namespace quillet::test {

// Waits until the condition holds, without an event loop; false when it does not within the limit.
template <typename Condition>
bool waitFor(Condition condition,
             std::chrono::milliseconds limit = std::chrono::milliseconds(5000)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace quillet::test
