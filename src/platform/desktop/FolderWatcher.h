#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quillet::platform {

// Reports changes in folders and in the folders up to `levels` levels below them (0: only the
// folders): files written, made, renamed, removed. The folders need not exist yet, and may go and
// come back. Folders that cannot be watched are skipped, with one line in the log each time that
// the watches are set. Main thread only.
class FolderWatcher {
public:
    // `changed` is called from the event loop, once for all changes within kSettleTime of the
    // first.
    static constexpr int kSettleTime = 150;  // milliseconds

    FolderWatcher(const std::vector<std::string>& folders,
                  int levels,
                  std::function<void()> changed);
    ~FolderWatcher();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
