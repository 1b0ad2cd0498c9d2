#pragma once

#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "platform/base/ProgramArguments.h"

namespace quillet {

// How text from standard input or the clipboard is interpreted.
enum class TextKind { ByContent, Html, Plain };

// What the arguments of quillet-share ask for.
struct ShareCommandLine {
    std::optional<std::string> service;  // names the staging folder; none: a new folder
    std::string command = "compose";
    std::optional<std::string> title;
    TextKind textKind = TextKind::ByContent;
    std::vector<std::string> recipients;
    bool print = false;
    std::vector<std::string> items;  // as given; empty: the clipboard
};

// Reads the arguments of main, the program's name first. Wrong usage returns status 2 and a text
// that says what is wrong.
std::variant<ShareCommandLine, platform::EarlyExit> readShareCommandLine(
    std::span<char* const> arguments);

}  // namespace quillet
