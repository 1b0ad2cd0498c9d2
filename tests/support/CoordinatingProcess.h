#pragma once

#include <csignal>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/files/FileCoordinator.h"
#include "tests/support/FileLocks.h"

namespace quillet::test {

// Whether a process waits for a file lock.
inline bool waitsForLock(pid_t process) {
    return somebodyWaitsForLock(" " + std::to_string(process) + " ");
}

enum class Access { Read, Write };

// A process that coordinates one item; it stays in the accessor until it is let go.
class CoordinatingProcess {
public:
    CoordinatingProcess(const std::string& dataFolder, const std::string& path, Access access) {
        if (::pipe(entered_) != 0 || ::pipe(go_) != 0) {
            throw std::runtime_error("no pipe");
        }
        process_ = ::fork();
        if (process_ == 0) {
            ::close(go_[1]);
            const platform::FileCoordinator coordinator(dataFolder);
            const auto accessor = [this](const std::string&) {
                char byte = 'e';
                (void)!::write(entered_[1], &byte, 1);
                (void)!::read(go_[0], &byte, 1);
            };
            const auto error = access == Access::Read
                                   ? coordinator.coordinateReading(path, accessor)
                                   : coordinator.coordinateWriting(path, accessor);
            ::_exit(error ? 1 : 0);
        }
    }
    ~CoordinatingProcess() {
        kill();
        for (const int end : {entered_[0], entered_[1], go_[0], go_[1]}) {
            ::close(end);
        }
    }
    CoordinatingProcess(const CoordinatingProcess&) = delete;
    CoordinatingProcess& operator=(const CoordinatingProcess&) = delete;

    bool isInside() const {
        pollfd readable{entered_[0], POLLIN, 0};
        return ::poll(&readable, 1, 0) == 1;
    }
    bool isWaiting() const { return waitsForLock(process_); }
    void letGo() const { (void)!::write(go_[1], "g", 1); }
    void kill() {
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            ::waitpid(process_, nullptr, 0);
            process_ = 0;
        }
    }

private:
    int entered_[2] = {};
    int go_[2] = {};
    pid_t process_ = 0;
};

}  // namespace quillet::test
