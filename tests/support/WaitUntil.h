#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

namespace quillet::test {

// Runs the event loop until the condition holds; false when it does not within the limit, in
// milliseconds.
template <typename Condition>
bool waitUntil(Condition condition, int limit = 5000) {
    constexpr int kStep = 5;  // milliseconds
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > limit) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, kStep);
        QThread::msleep(1);
    }
    return true;
}

}  // namespace quillet::test
