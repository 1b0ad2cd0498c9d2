#pragma once

#include <cstdint>
#include <string>
#include <system_error>

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
inline Error posixError(int code, const std::string& what) {
    return {"POSIX", code, what + ": " + std::generic_category().message(code)};
}

}  // namespace quillet::platform
