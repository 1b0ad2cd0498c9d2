#include "platform/base/ByteBuffer.h"

#include <algorithm>
#include <cstring>

namespace quillet::platform {

void ByteBuffer::assign(std::string_view bytes) {
    size_ = 0;
    resize(bytes.size());
    if (!bytes.empty()) {
        std::memcpy(storage_.get(), bytes.data(), bytes.size());
    }
}

void ByteBuffer::resize(std::size_t size) {
    if (size > capacity_ || !storage_) {
        const std::size_t capacity = std::max(size, capacity_ + capacity_ / 2);
        auto storage = std::make_unique_for_overwrite<char[]>(capacity + kPadding);
        if (size_ > 0) {
            std::memcpy(storage.get(), storage_.get(), std::min(size_, size));
        }
        storage_ = std::move(storage);
        capacity_ = capacity;
    }
    size_ = size;
    std::memset(storage_.get() + size, 0, kPadding);
}

}  // namespace quillet::platform
