#include "model/RecordBlock.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>

namespace quillet {

namespace {

// Bytes of text that a record has on average, to start with about the right size.
constexpr std::size_t kTextPerRecord = 128;
constexpr std::size_t kSmallestChunk = 512;
constexpr std::size_t kLargestChunk = std::size_t{64} * 1024;

}  // namespace

std::shared_ptr<RecordBlock> RecordBlock::make(std::size_t capacity) {
    return std::shared_ptr<RecordBlock>(new RecordBlock(capacity));
}

RecordBlock::RecordBlock(std::size_t capacity)
    : capacity_(capacity),
      records_(std::allocator<ExtensionMessage>().allocate(capacity)),
      chunkSize_(std::clamp(capacity * kTextPerRecord, kSmallestChunk, kLargestChunk)) {}

RecordBlock::~RecordBlock() {
    std::destroy_n(records_, count_);
    std::allocator<ExtensionMessage>().deallocate(records_, capacity_);
}

std::shared_ptr<ExtensionMessage> RecordBlock::append(const std::shared_ptr<RecordBlock>& block) {
    if (block->count_ == block->capacity_) {
        throw std::length_error("RecordBlock: more records than its capacity");
    }
    auto* record = new (block->records_ + block->count_) ExtensionMessage();
    ++block->count_;
    return {block, record};
}

RecordText RecordBlock::store(std::string_view text) {
    return RecordText::placedAt(allocate(RecordText::storageSize(text.size())), text);
}

void* RecordBlock::allocate(std::size_t bytes) {
    if (bytes > left_) {
        const std::size_t size = std::max(bytes, chunkSize_);
        chunks_.push_back(std::make_unique_for_overwrite<std::byte[]>(size));
        if (bytes > chunkSize_) {
            return chunks_.back().get();  // the chunk begun before goes on being filled
        }
        next_ = chunks_.back().get();
        left_ = size;
    }
    left_ -= bytes;
    return std::exchange(next_, next_ + bytes);
}

}  // namespace quillet
