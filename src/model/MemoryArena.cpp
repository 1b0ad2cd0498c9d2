#include "model/MemoryArena.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace quillet {

namespace {

// The largest region is aligned to this, so that it can be a huge page.
constexpr std::size_t kHugePage = MemoryArena::kLargestRegion;

std::byte* newRegion(std::size_t bytes) {
    const bool isLargest = bytes == MemoryArena::kLargestRegion;
    void* const memory = isLargest ? std::aligned_alloc(kHugePage, bytes) : std::malloc(bytes);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    // Mapping all pages of a large region at once costs much less than one page fault for each, and
    // a huge page costs next to nothing. If the system refuses, pages come one by one. Small
    // regions are left alone: they may never fill.
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
        return memory;  // the current region stays in use
    }
    regionSize_ = std::min(2 * regionSize_, kLargestRegion);
    next_ = memory + bytes;
    left_ = size - bytes;
    return memory;
}

}  // namespace quillet
