#pragma once

#include <csignal>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
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

// A process that coordinates one item and stays in the accessor until letGo().
class CoordinatingProcess {
public:
    CoordinatingProcess(const std::string& dataFolder, const std::string& path, Access access) {
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_) != 0) {
            throw std::runtime_error("no socket pair");
        }
        process_ = ::fork();
        if (process_ == 0) {
            ::close(ends_[0]);
            const platform::FileCoordinator coordinator(dataFolder);
            const auto accessor = [this](const std::string&) {
                char byte = 'e';
                (void)!::write(ends_[1], &byte, 1);
                (void)!::read(ends_[1], &byte, 1);
            };
            const auto error = access == Access::Read
                                   ? coordinator.coordinateReading(path, accessor)
                                   : coordinator.coordinateWriting(path, accessor);
            ::_exit(error ? 1 : 0);
        }
    }
    ~CoordinatingProcess() {
        kill();
        ::close(ends_[0]);
        ::close(ends_[1]);
    }
    CoordinatingProcess(const CoordinatingProcess&) = delete;
    CoordinatingProcess& operator=(const CoordinatingProcess&) = delete;

    bool isInside() const {
        pollfd readable{ends_[0], POLLIN, 0};
        return ::poll(&readable, 1, 0) == 1;
    }
    bool isWaiting() const { return waitsForLock(process_); }
    void letGo() const { (void)!::write(ends_[0], "g", 1); }
    void kill() {
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            ::waitpid(process_, nullptr, 0);
            process_ = 0;
        }
    }

private:
    int ends_[2] = {};  // of this process and of the other one
    pid_t process_ = 0;
};

}  // namespace quillet::test
