#include "platform/files/LockWait.h"

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

namespace quillet::platform {

namespace {

constexpr std::chrono::seconds kPatience{1};  // before a terminal is told

std::atomic<bool> isEnded = false;

// Readable for ever once nobody is to wait any longer.
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
    const auto start = Clock::now();
    std::array<pollfd, 2> events{{{descriptor_, POLLIN, 0}, {ending().get(), POLLIN, 0}}};
    for (;;) {
        int left = -1;  // milliseconds; without a limit
        if (limit) {
            const auto waited =
                std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
            if (waited >= *limit) {
                return false;
            }
            left = static_cast<int>((*limit - waited).count());
        }
        if (::poll(events.data(), events.size(), left) > 0) {
            return true;
        }
    }
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
            // Whatever stands on the terminal's line so far is progress that goes on below.
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
