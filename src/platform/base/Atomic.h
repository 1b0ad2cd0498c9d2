#pragma once

#include <mutex>
#include <utility>

namespace quillet::platform {

// An atomic property: any threads may get and set the whole value at the same time.
template <typename Value>
class Atomic {
public:
    Atomic() = default;
    explicit Atomic(Value value) : value_(std::move(value)) {}

    Value get() const {
        const std::lock_guard lock(mutex_);
        return value_;
    }

    void set(Value value) {
        {
            const std::lock_guard lock(mutex_);
            std::swap(value_, value);
        }
        // The old value is destroyed here, without the lock: its destructor may be slow.
    }

    // Replaces the value by change(value); nobody can set the value in between.
    template <typename Change>
    void update(Change change) {
        Value old;
        const std::lock_guard lock(mutex_);
        old = std::exchange(value_, change(std::as_const(value_)));
    }

private:
    mutable std::mutex mutex_;
    Value value_{};
};

}  // namespace quillet::platform
