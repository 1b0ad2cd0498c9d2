#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "model/ExtensionMessage.h"
#include "platform/foundation/MemoryArena.h"

namespace quillet {

// The memory of the records of one read: the records of a file side by side, their texts packed
// behind each other. Handles to the records keep the block alive, so a list costs one reference
// count. Filled by one thread, before the records are handed on.
class RecordBlock {
public:
    static std::shared_ptr<RecordBlock> make();
    ~RecordBlock();
    RecordBlock(const RecordBlock&) = delete;
    RecordBlock& operator=(const RecordBlock&) = delete;

    // Makes room for `count` further records.
    void reserve(std::size_t count);
    // A new record of the block with every field zero or none, in the room reserved last.
    static std::shared_ptr<ExtensionMessage> append(const std::shared_ptr<RecordBlock>& block);
    // Copies a text into the block; the result is for records of this block alone.
    RecordText store(std::string_view text);

private:
    struct Row {
        ExtensionMessage* records;
        std::size_t count;
    };

    RecordBlock() = default;

    platform::MemoryArena memory_;
    std::vector<Row> rows_;
    std::size_t room_ = 0;  // records that the last row can still take
};

}  // namespace quillet
