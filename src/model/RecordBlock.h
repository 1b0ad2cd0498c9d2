#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "model/ExtensionMessage.h"
#include "model/MemoryArena.h"

namespace quillet {

// The memory of one read: the records of a file lie side by side, their texts follow one another.
// Handles to records keep the block alive, so a list costs one reference count. One thread fills
// the block before others see its records.
class RecordBlock {
public:
    static std::shared_ptr<RecordBlock> make();
    ~RecordBlock();
    RecordBlock(const RecordBlock&) = delete;
    RecordBlock& operator=(const RecordBlock&) = delete;

    // Makes room for `count` further records.
    void reserve(std::size_t count);
    // Appends a record with every field zero or none. Throws std::length_error when the room that
    // was reserved last is full.
    ExtensionMessage& append() {
        if (room_ == 0) {
            throw std::length_error("RecordBlock: more records than there is room for");
        }
        Row& row = rows_.back();
        auto* record = new (row.records + row.count) ExtensionMessage();
        ++row.count;
        ++count_;
        --room_;
        return *record;
    }
    // A handle to a record of the block.
    static std::shared_ptr<ExtensionMessage> handle(std::shared_ptr<RecordBlock> block,
                                                    ExtensionMessage& record) {
        return {std::move(block), &record};
    }
    // Copies a text into the block. Only records of this block may hold the result.
    RecordText store(std::string_view text) {
        void* storage =
            memory_.allocate(RecordText::storageSize(text.size()), RecordText::kAlignment);
        return RecordText::placedAt(storage, text);
    }

    std::size_t count() const noexcept { return count_; }
    // Calls `visit` with every record, in the order of appending.
    template <typename Visit>
    void forEach(Visit visit) const {
        for (const Row& row : rows_) {
            std::for_each_n(row.records, row.count, visit);
        }
    }

private:
    struct Row {
        ExtensionMessage* records;
        std::size_t count;
    };

    RecordBlock() = default;

    MemoryArena memory_;
    std::vector<Row> rows_;
    std::size_t count_ = 0;
    std::size_t room_ = 0;  // records that still fit into the last row
};

}  // namespace quillet
