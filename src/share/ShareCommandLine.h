#pragma once

#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

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

// Text to print and the exit status to end with, instead of sharing.
struct ShareEarlyExit {
    int status = 0;
    std::string text;
};

// Reads the arguments of main, the program's name first. Wrong usage ends with status 2 and a text
// that says what to do. One thread at a time.
std::variant<ShareCommandLine, ShareEarlyExit> readShareCommandLine(
    std::span<char* const> arguments);

}  // namespace quillet
