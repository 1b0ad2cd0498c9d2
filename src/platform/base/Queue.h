#pragma once

#include <functional>

namespace quillet::platform {

// Runs blocks later. Any thread may add a block.
class Queue {
public:
    using Block = std::function<void()>;

    virtual ~Queue() = default;
    // Runs `block` later, never inside this call.
    virtual void async(Block block) = 0;
};

}  // namespace quillet::platform
