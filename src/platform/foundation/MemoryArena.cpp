#include "platform/foundation/MemoryArena.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace quillet::platform {

void* MemoryArena::allocate(std::size_t bytes, std::size_t alignment) {
    const std::size_t padding = (0 - reinterpret_cast<std::uintptr_t>(next_)) & (alignment - 1);
    if (bytes + padding <= left_) {
        left_ -= bytes + padding;
        return std::exchange(next_, next_ + padding + bytes) + padding;
    }
    const std::size_t size = std::max(bytes, regionSize_);
    regions_.push_back(std::make_unique_for_overwrite<std::byte[]>(size));
    std::byte* const memory = regions_.back().get();
    if (size > regionSize_) {
        return memory;  // the region begun before goes on being filled
    }
    regionSize_ = std::min(2 * regionSize_, kLargestRegion);
    next_ = memory + bytes;
    left_ = size - bytes;
    return memory;
}

}  // namespace quillet::platform
