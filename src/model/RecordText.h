#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quillet {

// An immutable UTF-8 text of a record that can be absent, in the size of a pointer. A record has
// six of them and a store has hundreds of thousands of records.
//
// The text lies either in the record's block (see RecordBlock), which then frees it, or in memory
// of its own.
class RecordText {
public:
    RecordText() = default;
    ~RecordText() { release(); }
    RecordText(RecordText&& other) noexcept : tagged_(std::exchange(other.tagged_, 0)) {}
    RecordText& operator=(RecordText&& other) noexcept {
        std::swap(tagged_, other.tagged_);
        return *this;
    }
    RecordText(const RecordText&) = delete;
    RecordText& operator=(const RecordText&) = delete;

    // Bytes that a text of this size takes, and their alignment.
    static constexpr std::size_t kAlignment = alignof(std::uint32_t);
    static constexpr std::size_t storageSize(std::size_t size) {
        return (sizeof(std::uint32_t) + size + kAlignment - 1) / kAlignment * kAlignment;
    }

    // Writes `text` to `storage`, which has storageSize bytes and outlives the result.
    static RecordText placedAt(void* storage, std::string_view text) noexcept {
        const auto size = static_cast<std::uint32_t>(text.size());
        std::memcpy(storage, &size, sizeof size);
        if (size > 0) {
            std::memcpy(static_cast<char*>(storage) + sizeof size, text.data(), size);
        }
        return RecordText(reinterpret_cast<std::uintptr_t>(storage));
    }

    // A text with memory of its own; absent for none.
    static RecordText copyOf(const std::optional<std::string>& text) {
        if (!text) {
            return {};
        }
        void* storage = std::malloc(storageSize(text->size()));
        if (storage == nullptr) {
            throw std::bad_alloc();
        }
        RecordText result = placedAt(storage, *text);
        result.tagged_ |= kOwned;
        return result;
    }

    // A second handle to a text that lies in a block.
    RecordText sharedInBlock() const noexcept { return RecordText(tagged_); }

    explicit operator bool() const noexcept { return tagged_ != 0; }

    std::string_view view() const noexcept {
        if (tagged_ == 0) {
            return {};
        }
        std::uint32_t size = 0;
        std::memcpy(&size, storage(), sizeof size);
        return {storage() + sizeof size, size};
    }

private:
    static constexpr std::uintptr_t kOwned = 1;  // free in an aligned address

    explicit RecordText(std::uintptr_t tagged) : tagged_(tagged) {}

    char* storage() const noexcept { return reinterpret_cast<char*>(tagged_ & ~kOwned); }

    void release() noexcept {
        if ((tagged_ & kOwned) != 0) {
            std::free(storage());
        }
    }

    std::uintptr_t tagged_ = 0;
};

}  // namespace quillet
