#pragma once

#include <cstddef>
#include <future>
#include <type_traits>
#include <vector>

namespace quillet {

// Calls `work` with 0 to `count` - 1, side by side where the system has threads to give. The first
// part runs on the thread that waits for it, so that a single one needs no other. What `work`
// refers to has to outlive the result, whose end waits for every part that has begun.
template <typename Work>
auto startParts(std::size_t count, const Work& work) {
    std::vector<std::future<std::invoke_result_t<Work, std::size_t>>> parts;
    for (std::size_t part = 0; part < count; ++part) {
        const auto launch =
            part == 0 ? std::launch::deferred : std::launch::async | std::launch::deferred;
        parts.push_back(std::async(launch, work, part));
    }
    return parts;
}

}  // namespace quillet
