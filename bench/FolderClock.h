#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "platform/files/FileDescriptor.h"

namespace quillet::bench {

// Notes when a file that is expected has come into a folder by a rename. A thread of its own waits
// for it, so that work of the event loop does not delay the time.
class FolderClock {
public:
    // The folder must exist. Throws std::system_error if it cannot be watched.
    explicit FolderClock(const std::string& folder);
    ~FolderClock();

    // Starts a new wait. `isThere` is asked on the other thread, after each rename. Call it only
    // when the last wait is over.
    void expect(std::function<bool()> isThere);
    // Seconds since 1970; 0: not yet. The event loop wakes up when it changes.
    double time() const { return time_; }

private:
    void watch();

    platform::FileDescriptor changes_;
    platform::FileDescriptor end_;  // readable when the thread has to end
    std::function<bool()> isThere_;
    std::atomic<bool> isWaiting_ = false;
    std::atomic<double> time_ = 0;
    std::thread thread_;
};

}  // namespace quillet::bench
