#include "platform/foundation/MemoryArena.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace quillet::platform {

namespace {

constexpr std::size_t kHugePage = std::size_t{2} * 1024 * 1024;  // bytes

std::size_t roundedUp(std::size_t bytes, std::size_t unit) {
    return (bytes + unit - 1) / unit * unit;
}

}  // namespace

void MemoryArena::Free::operator()(std::byte* memory) const noexcept {
    std::free(memory);
}

MemoryArena::Region MemoryArena::makeRegion(std::size_t bytes) {
    const bool large = bytes >= kHugePage;
    void* memory =
        large ? std::aligned_alloc(kHugePage, roundedUp(bytes, kHugePage)) : std::malloc(bytes);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    if (large) {
        // A system without huge pages refuses; the memory is as good without them.
        madvise(memory, bytes, MADV_HUGEPAGE);
    }
    return Region(static_cast<std::byte*>(memory));
}

void* MemoryArena::allocate(std::size_t bytes, std::size_t alignment) {
    const std::size_t padding = (0 - reinterpret_cast<std::uintptr_t>(next_)) & (alignment - 1);
    if (bytes + padding <= left_) {
        left_ -= bytes + padding;
        return std::exchange(next_, next_ + padding + bytes) + padding;
    }
    const std::size_t size = std::max(bytes, regionSize_);
    regions_.push_back(makeRegion(size));
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
