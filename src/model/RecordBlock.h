#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "model/ExtensionMessage.h"

namespace quillet {

// The memory of the records of one file: the records side by side, their texts packed behind each
// other. Handles to the records keep the block alive, so a list costs one reference count a file.
// Filled by one thread, before the records are handed on.
class RecordBlock {
public:
    static std::shared_ptr<RecordBlock> make(std::size_t capacity);
    ~RecordBlock();
    RecordBlock(const RecordBlock&) = delete;
    RecordBlock& operator=(const RecordBlock&) = delete;

    // A new record of the block with every field zero or none. At most `capacity` records.
    static std::shared_ptr<ExtensionMessage> append(const std::shared_ptr<RecordBlock>& block);
    // Copies a text into the block; the result is for records of this block alone.
    RecordText store(std::string_view text);

private:
    explicit RecordBlock(std::size_t capacity);
    void* allocate(std::size_t bytes);

    std::size_t capacity_;
    std::size_t count_ = 0;
    ExtensionMessage* records_;
    std::vector<std::unique_ptr<std::byte[]>> chunks_;
    std::byte* next_ = nullptr;
    std::size_t left_ = 0;  // bytes
    std::size_t chunkSize_;
};

}  // namespace quillet
