#pragma once

#include <fstream>
#include <string>

namespace quillet::test {

// Whether somebody waits for a file lock, as the kernel tells it. `mark` is a part of the lock's
// line in /proc/locks: " PROCESS " or ":INODE ".
inline bool somebodyWaitsForLock(const std::string& mark) {
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        if (line.find("->") != std::string::npos && line.find(mark) != std::string::npos) {
            return true;
        }
    }
    return false;
}

}  // namespace quillet::test
