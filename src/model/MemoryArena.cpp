#include "model/MemoryArena.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace quillet {

namespace {

// Of the largest region, so that it can be a huge page.
constexpr std::size_t kHugePage = MemoryArena::kLargestRegion;

std::byte* newRegion(std::size_t bytes) {
    const bool isLargest = bytes == MemoryArena::kLargestRegion;
    void* const memory = isLargest ? std::aligned_alloc(kHugePage, bytes) : std::malloc(bytes);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    // Small regions are for a few records, which may never fill them. The pages of a large one cost
    // much less at once than one by one at the first write to each, and next to nothing as a huge
    // one. Where the system refuses, they come one by one.
    if (isLargest) {
        ::madvise(memory, bytes, MADV_HUGEPAGE);
        ::madvise(memory, bytes, MADV_POPULATE_WRITE);
    }
    return static_cast<std::byte*>(memory);
}

}  // namespace

void* MemoryArena::allocateInNewRegion(std::size_t bytes) {
    const std::size_t size = std::max(bytes, regionSize_);
    std::byte* const memory = regions_.emplace_back(newRegion(size)).get();
    if (size > regionSize_) {
        return memory;  // the region begun before goes on being filled
    }
    regionSize_ = std::min(2 * regionSize_, kLargestRegion);
    next_ = memory + bytes;
    left_ = size - bytes;
    return memory;
}

}  // namespace quillet
