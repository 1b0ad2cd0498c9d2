#pragma once

#include <exception>
#include <string>

namespace quillet::platform {

// The platform's exception, for a value that cannot be converted and an operation on the wrong kind
// of object. Guards catch only this type; std::bad_alloc and all others pass through.
class Exception : public std::exception {
public:
    explicit Exception(std::string reason) : reason_(std::move(reason)) {}

    // UTF-8, one line, for log lines.
    const std::string& description() const noexcept { return reason_; }
    const char* what() const noexcept override { return reason_.c_str(); }

private:
    std::string reason_;
};

}  // namespace quillet::platform
