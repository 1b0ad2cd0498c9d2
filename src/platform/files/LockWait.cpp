#include "platform/files/LockWait.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <poll.h>
#include <string>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

#include "platform/base/StandardError.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/Path.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::platform {

namespace {

constexpr std::chrono::seconds kPatience{1};  // before the user is told

std::atomic<bool> isEnded = false;

// Becomes readable, and stays so, when all waits end.
const FileDescriptor& ending() {
    static const auto* const descriptor =
        new FileDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    return *descriptor;
}

LockWaiter& currentWaiter() {
    static auto* const waiter = new LockWaiter([](const LockWait& wait) { wait.block(); });
    return *waiter;
}

}  // namespace

bool LockWait::block(std::optional<std::chrono::milliseconds> limit) const {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + limit.value_or(std::chrono::milliseconds::zero());
    std::array<pollfd, 2> events{{{descriptor_, POLLIN, 0}, {ending().get(), POLLIN, 0}}};
    return uninterrupted([&] {
               const auto left =
                   std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
               return ::poll(
                   events.data(), events.size(), limit ? std::max(static_cast<int>(left), 0) : -1);
           }) > 0;
}

void setLockWaiter(LockWaiter waiter) {
    currentWaiter() = std::move(waiter);
}

const LockWaiter& lockWaiter() {
    return currentWaiter();
}

void tellOfLongLockWaits(const char* program) {
    if (::isatty(STDERR_FILENO) == 0) {
        return;
    }
    setLockWaiter([program](const LockWait& wait) {
        if (!wait.block(kPatience)) {
            // Overwrites the progress text on the terminal's line; progress goes on below.
            const std::string line = printableLine(
                std::string(program) + ": waiting for the mail application to finish with \"" +
                Path::lastPathComponent(wait.item()) + "\" …");
            std::fputs(("\r\033[K" + line + "\n").c_str(), stderr);
            wait.block();
        }
    });
}

void endLockWaits() noexcept {
    isEnded = true;
    ::eventfd_write(ending().get(), 1);
}

bool areLockWaitsEnded() noexcept {
    return isEnded;
}

}  // namespace quillet::platform
