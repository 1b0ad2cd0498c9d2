#pragma once

#include <csignal>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/files/FileCoordinator.h"

namespace quillet::test {

// Whether a process waits for a file lock. `mark` is a part of the lock's line in /proc/locks:
// " PROCESS " or ":INODE ".
inline bool somebodyWaitsForLock(const std::string& mark) {
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        if (line.find("->") != std::string::npos && line.find(mark) != std::string::npos) {
            return true;
        }
    }
    return false;
}

// Whether a process waits for the item "Today". The runtime folder must belong to the test alone.
inline bool somebodyWaitsForToday(const std::string& runtimeFolder) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(runtimeFolder)) {
        struct stat status {};
        if (entry.path().filename() == "Today.lock" && ::stat(entry.path().c_str(), &status) == 0) {
            return somebodyWaitsForLock(":" + std::to_string(status.st_ino) + " ");
        }
    }
    return false;
}

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
