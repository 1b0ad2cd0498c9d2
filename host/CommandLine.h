#pragma once

#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "platform/base/ProgramArguments.h"

namespace quillet::host {

using platform::kFailure;
using platform::kSuccess;

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

// Reads the arguments of main, the program's name first; they are bytes of any encoding. Wrong
// usage ends with status 2 and a text that says what is wrong.
std::variant<CommandLine, platform::EarlyExit> readCommandLine(std::span<char* const> arguments);

}  // namespace quillet::host
