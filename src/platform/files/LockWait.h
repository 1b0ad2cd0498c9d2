#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace quillet::platform {

// A wait for a lock that somebody else holds, for the thread that wants the lock. Another thread
// stands in the kernel's queue meanwhile.
class LockWait {
public:
    // `descriptor` becomes readable with the lock.
    LockWait(const std::string& item, int descriptor) : item_(item), descriptor_(descriptor) {}

    // The path of what is waited for.
    const std::string& item() const { return item_; }
    // A file descriptor, readable once the lock is there.
    int descriptor() const { return descriptor_; }
    // Blocks until the lock is there or nobody is to wait any longer; false where `limit` is over
    // before.
    bool block(std::optional<std::chrono::milliseconds> limit = std::nullopt) const;

private:
    const std::string& item_;
    int descriptor_;
};

// How a thread spends its waits: returns when LockWait::block() would. One that returns earlier
// gives the lock up.
using LockWaiter = std::function<void(const LockWait& wait)>;

// Replaces LockWait::block() for all threads; before there are any that wait.
void setLockWaiter(LockWaiter waiter);
const LockWaiter& lockWaiter();

// For a program on a terminal: a waiter that says on standard error after a second, once a wait,
// what `program` waits for. Nothing changes where standard error is no terminal.
void tellOfLongLockWaits(const char* program);

// From now on nobody in this process waits for a lock: the program is to end. Any thread.
void endLockWaits() noexcept;
bool areLockWaitsEnded() noexcept;

}  // namespace quillet::platform
