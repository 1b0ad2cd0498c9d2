#include "platform/desktop/LockWaitLoop.h"

#include <QEventLoop>
#include <QSocketNotifier>
#include <chrono>
#include <thread>

#include "platform/files/LockWait.h"

namespace quillet::platform {

namespace {

constexpr std::chrono::milliseconds kUsualWrite{100};

void runLoop(const LockWait& wait) {
    QEventLoop loop;
    const QSocketNotifier over(wait.descriptor(), QSocketNotifier::Read);
    QObject::connect(&over, &QSocketNotifier::activated, &loop, &QEventLoop::quit);
    loop.exec();  // returns at once if the application has been told to exit
}

}  // namespace

void answerDuringLockWaits() {
    setLockWaiter([mainThread = std::this_thread::get_id()](const LockWait& wait) {
        if (std::this_thread::get_id() != mainThread) {
            wait.block();
        } else if (!wait.block(kUsualWrite)) {
            runLoop(wait);
        }
    });
}

}  // namespace quillet::platform
