#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

namespace quillet {

// Memory for many small things that end together. It grows by regions, each twice as large as the
// one before, up to kLargestRegion. The pages of a largest region are mapped at once, as one huge
// page if the system has one. One thread at a time.
class MemoryArena {
public:
    static constexpr std::size_t kSmallestRegion = std::size_t{4} * 1024;        // bytes
    static constexpr std::size_t kLargestRegion = std::size_t{2} * 1024 * 1024;  // bytes

    MemoryArena() = default;
    ~MemoryArena() = default;
    MemoryArena(const MemoryArena&) = delete;
    MemoryArena& operator=(const MemoryArena&) = delete;

    // Returns uninitialised bytes that live as long as the arena. `alignment` is a power of two, at
    // most that of std::max_align_t. Throws std::bad_alloc.
    void* allocate(std::size_t bytes, std::size_t alignment) {
        const std::size_t padding = (0 - reinterpret_cast<std::uintptr_t>(next_)) & (alignment - 1);
        if (bytes + padding > left_) {
            return allocateInNewRegion(bytes);
        }
        left_ -= bytes + padding;
        return std::exchange(next_, next_ + padding + bytes) + padding;
    }

private:
    struct Free {
        void operator()(std::byte* memory) const noexcept { std::free(memory); }
    };

    void* allocateInNewRegion(std::size_t bytes);

    std::vector<std::unique_ptr<std::byte[], Free>> regions_;
    std::byte* next_ = nullptr;
    std::size_t left_ = 0;  // bytes
    std::size_t regionSize_ = kSmallestRegion;
};

}  // namespace quillet
