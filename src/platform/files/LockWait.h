#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace quillet::platform {

// A wait for a lock that is held elsewhere. Belongs to the thread that wants the lock; another
// thread waits in the kernel meanwhile.
class LockWait {
public:
    // `descriptor` becomes readable when the lock is there.
    LockWait(const std::string& item, int descriptor) : item_(item), descriptor_(descriptor) {}

    // The path of the item whose lock is wanted.
    const std::string& item() const { return item_; }
    // A file descriptor that becomes readable when the lock is there.
    int descriptor() const { return descriptor_; }
    // Blocks until the lock is there or endLockWaits() is called. Returns false if `limit` is over
    // first.
    bool block(std::optional<std::chrono::milliseconds> limit = std::nullopt) const;

private:
    const std::string& item_;
    int descriptor_;
};

// How a thread spends its waits. Returns when LockWait::block() would; returning earlier gives the
// lock up.
using LockWaiter = std::function<void(const LockWait& wait)>;

// Replaces LockWait::block() for all threads. Must be called before any thread waits.
void setLockWaiter(LockWaiter waiter);
const LockWaiter& lockWaiter();

// Sets a waiter for a program on a terminal: when a wait lasts a second, it writes to standard
// error what `program` waits for. Does nothing if standard error is not a terminal.
void tellOfLongLockWaits(const char* program);

// Ends all waits of this process, now and later, because the program is to end. Any thread.
void endLockWaits() noexcept;
bool areLockWaitsEnded() noexcept;

}  // namespace quillet::platform
