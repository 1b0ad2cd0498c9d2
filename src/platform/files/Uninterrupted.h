#pragma once

#include <cerrno>

namespace quillet::platform {

// Repeats a system call as long as a signal interrupts it.
template <typename Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

}  // namespace quillet::platform
