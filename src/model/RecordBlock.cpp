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

}  // namespace quillet
