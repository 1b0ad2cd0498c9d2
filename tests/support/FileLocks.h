#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>

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

}  // namespace quillet::test
