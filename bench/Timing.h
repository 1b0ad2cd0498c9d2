#pragma once

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <vector>

namespace quillet::bench {

// The exit status of a program whose results are right but that is slower than it should be. Other
// work on the machine can cause that.
inline constexpr int kTooSlow = 3;

// Returns the clock's time in milliseconds. Only differences mean something.
inline double milliseconds(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

// Returns the median, the upper one of an even number of values. There must be at least one.
inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace quillet::bench
