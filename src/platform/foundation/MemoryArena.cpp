#include "platform/foundation/MemoryArena.h"

#include <algorithm>
#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace quillet::platform {

namespace {

// Has the system hand over the pages of a region at once, which costs two thirds of what they cost
// one by one at the first write to each. Where it refuses, they come that way.
void populate(std::byte* memory, std::size_t bytes) {
    static const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto begin = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t ahead = (0 - begin) & (page - 1);  // bytes to the first whole page
    if (ahead < bytes) {
        ::madvise(memory + ahead, (bytes - ahead) & ~(page - 1), MADV_POPULATE_WRITE);
    }
}

}  // namespace

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
    // Small regions are for a few records, which may never fill them.
    if (size == kLargestRegion) {
        populate(memory, size);
    }
    regionSize_ = std::min(2 * regionSize_, kLargestRegion);
    next_ = memory + bytes;
    left_ = size - bytes;
    return memory;
}

}  // namespace quillet::platform
