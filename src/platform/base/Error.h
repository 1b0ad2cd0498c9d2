#pragma once

#include <cstdint>
#include <string>

namespace quillet::platform {

// A failure as a value. `domain` says whose `code` it is ("POSIX": errno), `text` says in words
// what failed and on what (UTF-8, one line).
struct Error {
    std::string domain;
    std::int64_t code = 0;
    std::string text;

    // For people and log lines: the text. Domain and code are for the program.
    const std::string& description() const { return text; }
};

// An Error of the domain "POSIX" for `code` (an errno value); its text is "what: reason".
Error posixError(int code, const std::string& what);

}  // namespace quillet::platform
