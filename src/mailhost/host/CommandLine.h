#pragma once

#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "platform/base/ProgramArguments.h"

namespace quillet::mailhost {

// What one start of quillet-mail-host is asked to do.
struct CommandLine {
    enum class Task { Run, Once, Detect };

    Task task = Task::Run;
    std::optional<std::string> configuration;  // a file
    std::optional<std::string> container;      // a folder
    std::string identifier = "it.tarno.quillet";
    bool logs = false;
    std::vector<std::string> urls;  // commands to carry out, of Run
};

// Reads the arguments of main, the program's name first; they are bytes of any encoding. Wrong
// usage ends with status 2 and a text that says what is wrong.
std::variant<CommandLine, platform::EarlyExit> readCommandLine(std::span<char* const> arguments);

}  // namespace quillet::mailhost
