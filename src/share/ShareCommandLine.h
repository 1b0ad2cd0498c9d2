#pragma once

#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "platform/base/ProgramArguments.h"

namespace quillet {

// How a text is taken that comes without a name.
enum class TextKind { ByContent, Html, Plain };

// What one start of quillet-share is asked to do.
struct ShareCommandLine {
    std::optional<std::string> service;  // of the staging folder; none: one of its own
    std::string command = "compose";
    std::optional<std::string> title;
    TextKind textKind = TextKind::ByContent;
    std::vector<std::string> recipients;
    bool print = false;
    std::vector<std::string> items;  // bytes as given; empty: the clipboard
};

// Reads the arguments of main, the program's name first. Wrong usage ends with status 2 and a text
// that says what is wrong.
std::variant<ShareCommandLine, platform::EarlyExit> readShareCommandLine(
    std::span<char* const> arguments);

}  // namespace quillet
