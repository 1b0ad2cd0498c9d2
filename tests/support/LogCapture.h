#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/base/Log.h"

namespace quillet::test {

// Records what is logged during the scope, from any thread, instead of writing it.
class LogCapture {
public:
    LogCapture()
        : previous_(platform::Log::setSink([this](const std::string& line) {
              const std::lock_guard lock(mutex_);
              lines_.push_back(line);
          })) {}
    ~LogCapture() { platform::Log::setSink(std::move(previous_)); }

    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
    platform::Log::Sink previous_;
};

}  // namespace quillet::test
