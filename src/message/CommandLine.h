#pragma once

#include <span>
#include <string>
#include <variant>

#include "platform/base/ProgramArguments.h"

namespace quillet::message {

struct CommandLine {
    std::string file;
    bool isDraft = false;
};

// Reads the arguments of main(). Any thread.
std::variant<CommandLine, platform::EarlyExit> readCommandLine(std::span<char* const> arguments);

}  // namespace quillet::message
