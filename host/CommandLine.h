#pragma once

#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace quillet::host {

inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1;
inline constexpr int kWrongUsage = 2;

// What one start of quillet-sample-host is asked to do.
struct CommandLine {
    enum class Command { Write, Run };

    Command command = Command::Write;
    std::optional<std::string> bundleIdentifier;
    // Of write.
    std::string folder;
    bool isVerbose = false;
    // Of run.
    std::optional<std::string> container;
    std::string identifier = "it.tarno.quillet";
    std::vector<std::string> urls;
};

// Text to print and the exit status to end with, instead of a command.
struct EarlyExit {
    int status = kSuccess;
    std::string text;
};

// Reads the arguments of main, the program's name first; they are bytes of any encoding. Wrong
// usage ends with kWrongUsage and says what is wrong.
std::variant<CommandLine, EarlyExit> readCommandLine(std::span<char* const> arguments);

}  // namespace quillet::host
