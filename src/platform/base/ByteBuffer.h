#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace quillet::platform {

// Bytes that keep their storage when the contents are replaced, for reading many files in turn.
// kPadding zero bytes follow the data, so that a scanner may read whole words at the end. Not
// thread-safe.
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
    // Keeps the first min(old, new) bytes; further bytes are uninitialised.
    void resize(std::size_t size);

private:
    static constexpr char kEmpty[kPadding] = {};

    std::unique_ptr<char[]> storage_;
    std::size_t capacity_ = 0;
    std::size_t size_ = 0;
};

}  // namespace quillet::platform
