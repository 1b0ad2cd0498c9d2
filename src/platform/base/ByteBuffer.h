#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace quillet::platform {

// Bytes whose storage is kept when the contents are replaced, for reading many files in turn.
// Behind the last byte stand kPadding zero bytes, so that a scanner may look ahead of the end in
// whole words. Not thread-safe.
class ByteBuffer {
public:
    static constexpr std::size_t kPadding = 64;

    ByteBuffer() = default;
    explicit ByteBuffer(std::string_view bytes) { assign(bytes); }

    const char* data() const noexcept { return size_ == 0 ? kEmpty : storage_.get(); }
    char* mutableData() noexcept { return storage_.get(); }
    std::size_t size() const noexcept { return size_; }
    std::string_view view() const noexcept { return {data(), size_}; }

    void assign(std::string_view bytes);
    // Sets the size; the first min(old, new) bytes are kept, further ones are uninitialised.
    void resize(std::size_t size);

private:
    static constexpr char kEmpty[kPadding] = {};

    std::unique_ptr<char[]> storage_;
    std::size_t capacity_ = 0;
    std::size_t size_ = 0;
};

}  // namespace quillet::platform
