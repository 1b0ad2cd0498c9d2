#include "message/CommandLine.h"

#include <array>

namespace quillet::message {

namespace {

using platform::ProgramArguments;
using platform::ProgramOption;
using platform::UsageError;

constexpr std::array kOptions{
    ProgramOption{"draft", nullptr, "the file is a draft: show it as one, without an answer\n"},
};

constexpr platform::Program kProgram{
    "quillet-message",
    QUILLET_VERSION,
    "[--draft] FILE\n",
    R"(Shows the message in a file, for those who have no mail program: its header, its text and its
attachments, which can be saved. Loads nothing from the disk or the net, and runs in a process
with limits of its own. What takes longer than a second is shown as plain text.
)",
    kOptions,
    {},
    "the file cannot be read, or there is no display\n",
};

CommandLine interpret(const ProgramArguments& arguments) {
    const std::vector<std::string>& words = arguments.words();
    if (words.empty()) {
        throw UsageError{"there is no file to show"};
    }
    if (words.size() > 1) {
        throw UsageError{"\"" + words[1] + "\" is one argument too many"};
    }
    return {words.front(), arguments.has("draft")};
}

}  // namespace

std::variant<CommandLine, platform::EarlyExit> readCommandLine(std::span<char* const> arguments) {
    return platform::readArguments(kProgram, arguments, interpret);
}

}  // namespace quillet::message
