#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>

#include "platform/base/ProgramArguments.h"
#include "platform/desktop/Appearance.h"

namespace quillet {

// What the arguments of quillet-today ask for.
struct CommandLine {
    enum class Command { Panel, List, Snapshot };

    Command command = Command::Panel;
    std::optional<std::string> container;  // absolute path; "": no container
    std::optional<std::string> bundleIdentifier;
    std::optional<platform::Look> look;
    std::optional<std::int64_t> segment;  // replaces the stored "segmented"
    bool json = false;
    std::string picture;  // where `snapshot` writes
    double scale = 1.0;   // device pixels a point
};

// Reads the arguments of main, the program's name first. Wrong usage returns status 2 and a text
// that says what is wrong.
std::variant<CommandLine, platform::EarlyExit> readCommandLine(std::span<char* const> arguments);

}  // namespace quillet
