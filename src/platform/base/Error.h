#pragma once

#include <cstdint>
#include <string>

namespace quillet::platform {

// A failure as a value. `domain` names the origin of `code` ("POSIX": errno). `text` says what
// failed on which object (UTF-8, one line).
struct Error {
    std::string domain;
    std::int64_t code = 0;
    std::string text;

    // The text, for people and log lines. Domain and code are for the program.
    const std::string& description() const { return text; }
};

// An error of the domain "POSIX" for an errno value, with the text "what: reason".
Error posixError(int code, const std::string& what);

}  // namespace quillet::platform
