#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

namespace quillet::test {

// Runs the event loop until the condition holds; false when it does not within five seconds.
template <typename Condition>
bool waitUntil(Condition condition) {
    constexpr int kLimit = 5000;  // milliseconds
    constexpr int kStep = 5;      // milliseconds
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > kLimit) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, kStep);
        QThread::msleep(1);
    }
    return true;
}

}  // namespace quillet::test
