#include "platform/desktop/StopSignals.h"

#include <QSocketNotifier>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <ctime>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

#include "platform/files/FileDescriptor.h"

namespace quillet::platform {

namespace {

constexpr std::array kSignals = {SIGTERM, SIGINT, SIGHUP};

std::atomic<int> counter = -1;  // the eventfd that a signal raises
std::atomic<int> last = 0;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free,
              "used by a signal handler");

// Ends a program that does not end in time.
struct Limit {
    std::atomic<bool> isSet = false;  // but not running yet
    timer_t timer{};
    itimerspec time{};
};
Limit limitOfEnd;

void raiseCounter() {
    if (limitOfEnd.isSet.exchange(false)) {
        ::timer_settime(limitOfEnd.timer, 0, &limitOfEnd.time, nullptr);
    }
    ::eventfd_write(counter, 1);
}

void receive(int signal) {
    const int before = errno;
    last = signal;
    raiseCounter();
    errno = before;
}

void setLimit(std::chrono::milliseconds limit) {
    struct sigaction action {};
    action.sa_handler = [](int /*signal*/) { ::_exit(0); };
    ::sigaction(SIGALRM, &action, nullptr);
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limit);
    limitOfEnd.time.it_value.tv_sec = seconds.count();
    limitOfEnd.time.it_value.tv_nsec = std::chrono::nanoseconds(limit - seconds).count();
    // By default the timer raises SIGALRM.
    limitOfEnd.isSet = ::timer_create(CLOCK_MONOTONIC, nullptr, &limitOfEnd.timer) == 0;
}

}  // namespace

// Handlers are used because programs started from here do not inherit them, unlike a signal mask.
struct StopSignals::State {
    FileDescriptor events{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    std::array<struct sigaction, kSignals.size()> before{};
    std::unique_ptr<QSocketNotifier> notifier;
};

StopSignals::StopSignals(std::optional<std::chrono::milliseconds> limit)
    : state_(std::make_unique<State>()) {
    if (limit) {
        setLimit(*limit);
    }
    counter = state_->events.get();
    last = 0;
    struct sigaction action {};
    action.sa_handler = receive;
    action.sa_flags = SA_RESTART;
    for (std::size_t index = 0; index < kSignals.size(); ++index) {
        struct sigaction& before = state_->before[index];
        ::sigaction(kSignals[index], nullptr, &before);
        if (state_->events && before.sa_handler != SIG_IGN) {
            ::sigaction(kSignals[index], &action, nullptr);
        }
    }
}

StopSignals::~StopSignals() {
    for (std::size_t index = 0; index < kSignals.size(); ++index) {
        ::sigaction(kSignals[index], &state_->before[index], nullptr);
    }
    counter = -1;
}

void StopSignals::request() noexcept {
    raiseCounter();
}

int StopSignals::received() noexcept {
    return last;
}

void StopSignals::connect(std::function<void()> stop) {
    if (!state_->events) {
        return;
    }
    state_->notifier =
        std::make_unique<QSocketNotifier>(state_->events.get(), QSocketNotifier::Read);
    QObject::connect(state_->notifier.get(),
                     &QSocketNotifier::activated,
                     state_->notifier.get(),
                     [this, stop = std::move(stop)] {
                         eventfd_t count = 0;
                         if (::eventfd_read(state_->events.get(), &count) == 0) {
                             stop();
                         }
                     });
}

}  // namespace quillet::platform
