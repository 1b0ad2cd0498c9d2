#pragma once

#include <utility>
#include <variant>

#include "platform/base/Error.h"

namespace quillet::platform {

// A value or an Error. Reading the one that is missing is a programming error and throws
// std::bad_variant_access.
template <typename Value>
class [[nodiscard]] Result {
public:
    // Implicit, so that functions can return either directly.
    Result(Value value) : state_(std::in_place_index<0>, std::move(value)) {}
    Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}

    explicit operator bool() const noexcept { return state_.index() == 0; }
    Value& value() { return std::get<0>(state_); }
    const Value& value() const { return std::get<0>(state_); }
    const Error& error() const { return std::get<1>(state_); }

private:
    std::variant<Value, Error> state_;
};

}  // namespace quillet::platform
