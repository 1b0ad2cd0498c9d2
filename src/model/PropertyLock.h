#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace quillet {

// The lock of an object's atomic properties, out of a fixed set shared by all objects: a lock of
// its own in each record would cost more than the record's fields.
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
