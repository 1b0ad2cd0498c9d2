#include "bench/PeakMemory.h"

#include <cstdlib>
#include <fstream>
#include <string>

namespace quillet::bench {

long peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) {
            return std::strtol(line.c_str() + sizeof "VmHWM:", nullptr, 10);
        }
    }
    return 0;
}

}  // namespace quillet::bench
