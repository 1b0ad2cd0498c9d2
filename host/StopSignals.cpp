#include "host/StopSignals.h"

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

namespace quillet::host {

namespace {

sigset_t stopSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&signals, signal);
    }
    return signals;
}

}  // namespace

StopSignals::StopSignals() {
    const sigset_t signals = stopSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    signals_ = platform::FileDescriptor(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

void StopSignals::connect(std::function<void()> stop) {
    notifier_ = std::make_unique<QSocketNotifier>(signals_.get(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(),
                     &QSocketNotifier::activated,
                     notifier_.get(),
                     [this, stop = std::move(stop)] {
                         signalfd_siginfo signal{};
                         if (::read(signals_.get(), &signal, sizeof(signal)) > 0) {
                             stop();
                         }
                     });
}

}  // namespace quillet::host
