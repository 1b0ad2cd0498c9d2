#pragma once

#include <QTimer>
#include <cstdint>
#include <string>

namespace quillet {

// Shows on a terminal how far the staging of large files has come, beginning after one second.
// Shows nothing if standard error is not a terminal. Main thread only, while its event loop runs.
class StagingProgress {
public:
    // Watches how the staging folder at `folder` grows to `total` bytes.
    StagingProgress(std::string folder, std::uintmax_t total);
    ~StagingProgress();
    StagingProgress(const StagingProgress&) = delete;
    StagingProgress& operator=(const StagingProgress&) = delete;

private:
    void show();

    std::string folder_;
    std::uintmax_t total_;  // bytes
    QTimer timer_;
    bool isShown_ = false;
};

}  // namespace quillet
