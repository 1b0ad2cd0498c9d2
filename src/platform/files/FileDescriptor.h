#pragma once

#include <utility>

namespace quillet::platform {

// Owns an open file descriptor and closes it in the destructor.
class FileDescriptor {
public:
    FileDescriptor() = default;
    // Takes ownership. A negative descriptor, from a failed call, means none.
    explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor();

    explicit operator bool() const noexcept { return descriptor_ >= 0; }
    int get() const noexcept { return descriptor_; }
    // Gives up ownership.
    int release() noexcept { return std::exchange(descriptor_, -1); }

private:
    int descriptor_ = -1;
};

}  // namespace quillet::platform
