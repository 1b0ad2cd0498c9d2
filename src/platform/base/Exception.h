#pragma once

#include <exception>
#include <string>

namespace quillet::platform {

// The platform's exception: a value that has no conversion to what was asked for, an operation
// on the wrong kind of object. Guards catch this type alone; std::bad_alloc and everything else
// pass them.
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
