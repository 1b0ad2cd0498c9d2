#pragma once

#include <QCoreApplication>

#include "tests/support/WaitFor.h"

namespace quillet::test {

// Runs the event loop until the condition is true. Returns false if that takes longer than `limit`
// milliseconds.
template <typename Condition>
bool waitUntil(Condition condition, int limit = 5000) {
    constexpr int kStep = 5;  // milliseconds
    return waitFor(
        [&] {
            const bool holds = condition();
            if (!holds) {
                QCoreApplication::processEvents(QEventLoop::AllEvents, kStep);
            }
            return holds;
        },
        std::chrono::milliseconds(limit));
}

}  // namespace quillet::test
