#pragma once

#include <deque>
#include <utility>

#include "platform/base/Queue.h"

namespace quillet {

// A queue for programs without an event loop: blocks wait for runAll(). One thread.
class PendingBlocks final : public platform::Queue {
public:
    void async(Block block) override { blocks_.push_back(std::move(block)); }

    // Runs all waiting blocks, and those that they schedule, in order.
    void runAll() {
        while (!blocks_.empty()) {
            const Block block = std::move(blocks_.front());
            blocks_.pop_front();
            block();
        }
    }

private:
    std::deque<Block> blocks_;
};

}  // namespace quillet
