#include "model/RecordBlock.h"

#include <memory>
#include <stdexcept>

namespace quillet {

std::shared_ptr<RecordBlock> RecordBlock::make() {
    return std::shared_ptr<RecordBlock>(new RecordBlock());
}

RecordBlock::~RecordBlock() {
    for (const Row& row : rows_) {
        std::destroy_n(row.records, row.count);
    }
}

void RecordBlock::reserve(std::size_t count) {
    void* memory = memory_.allocate(count * sizeof(ExtensionMessage), alignof(ExtensionMessage));
    rows_.push_back({static_cast<ExtensionMessage*>(memory), 0});
    room_ = count;
}

ExtensionMessage& RecordBlock::append() {
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

RecordText RecordBlock::store(std::string_view text) {
    void* storage = memory_.allocate(RecordText::storageSize(text.size()), RecordText::kAlignment);
    return RecordText::placedAt(storage, text);
}

}  // namespace quillet
