#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace quillet {

// Returns the lock of an object's atomic properties. All objects share a fixed set of locks: a lock
// in each record would take more memory than the record's fields.
inline std::mutex& propertyLock(const void* object) {
    constexpr std::size_t kLocks = 64;
    constexpr std::size_t kCacheLine = 64;  // bytes
    struct alignas(kCacheLine) Padded {
        std::mutex mutex;
    };
    static std::array<Padded, kLocks> locks;
    return locks[(reinterpret_cast<std::uintptr_t>(object) / kCacheLine) % kLocks].mutex;
}

}  // namespace quillet
