#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quillet {

// An immutable UTF-8 text of a record, which can be absent. It has the size of a pointer, since a
// record has six texts and a store has hundreds of thousands of records.
//
// The text lies in the record's block, which frees it (see RecordBlock), or in memory of its own.
class RecordText {
public:
    RecordText() = default;
    ~RecordText() { release(); }
    RecordText(RecordText&& other) noexcept : tagged_(std::exchange(other.tagged_, nullptr)) {}
    RecordText& operator=(RecordText&& other) noexcept {
        std::swap(tagged_, other.tagged_);
        return *this;
    }

    // Bytes that a text of this size takes, and their alignment.
    static constexpr std::size_t kAlignment = alignof(std::uint32_t);
    static constexpr std::size_t storageSize(std::size_t size) {
        return (sizeof(std::uint32_t) + size + kAlignment - 1) / kAlignment * kAlignment;
    }

    // Writes `text` to `storage`, which has storageSize bytes and outlives the result.
    static RecordText placedAt(void* storage, std::string_view text) noexcept {
        const auto size = static_cast<std::uint32_t>(text.size());
        auto* bytes = static_cast<char*>(storage);
        std::memcpy(bytes, &size, sizeof size);
        std::copy(text.begin(), text.end(), bytes + sizeof size);
        return RecordText(bytes);
    }

    // A text with memory of its own; absent when `text` is none.
    static RecordText copyOf(const std::optional<std::string>& text) {
        if (!text) {
            return {};
        }
        RecordText result = placedAt(::operator new(storageSize(text->size())), *text);
        result.tagged_ += kOwned;
        return result;
    }

    // A second handle to a text that lies in a block.
    RecordText sharedInBlock() const noexcept { return RecordText(tagged_); }

    explicit operator bool() const noexcept { return tagged_ != nullptr; }

    std::string_view view() const noexcept {
        if (tagged_ == nullptr) {
            return {};
        }
        const char* bytes = storage();
        std::uint32_t size = 0;
        std::memcpy(&size, bytes, sizeof size);
        return {bytes + sizeof size, size};
    }

private:
    // The address of the storage, plus one when the text owns it: storage is aligned, so the lowest
    // bit is free for this mark.
    static constexpr std::ptrdiff_t kOwned = 1;

    explicit RecordText(char* tagged) : tagged_(tagged) {}

    bool isOwned() const noexcept {
        return (reinterpret_cast<std::uintptr_t>(tagged_) & std::uintptr_t{kOwned}) != 0;
    }
    char* storage() const noexcept { return isOwned() ? tagged_ - kOwned : tagged_; }

    void release() noexcept {
        if (isOwned()) {
            ::operator delete(storage());
        }
    }

    char* tagged_ = nullptr;
};

}  // namespace quillet
