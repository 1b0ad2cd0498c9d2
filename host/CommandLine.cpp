#include "host/CommandLine.h"

#include <array>

namespace quillet::host {

namespace {

using platform::ProgramArguments;
using platform::ProgramOption;
using platform::UsageError;
using Command = CommandLine::Command;

constexpr std::array kOptions{
    ProgramOption{"container", "DIR", "run: work on this container\n"},
    ProgramOption{"bundle-identifier",
                  "ID",
                  "be the host of the widget with this identifier; one that begins with\n"
                  "\"it.tarno.quillet.beta\" has its own data folder\n"},
    ProgramOption{"identifier",
                  "ID",
                  "run: the name on the session bus, \"it.tarno.quillet\" by default; chooses\n"
                  "the data folder as well, unless \"--bundle-identifier\" is given\n"},
    ProgramOption{
        "verbose", nullptr, "write: name the files, and say whether the widget could be told\n"},
};

constexpr platform::Program kProgram{
    "quillet-sample-host",
    QUILLET_VERSION,
    "write DIR [OPTION]…\n"
    "run [OPTION]… [URL…]\n",
    R"(Plays the mail application for the Today panel.

Commands:
  write  write a sample mail store into the container DIR, making it where it is missing
         and replacing files of the same name, then tell a running panel to read it
  run    wait on the session bus for what the panel asks, carry it out on the container
         and print one line of JSON for each command; the URLs are opened first. A second
         start hands its URLs to the first. Needs no display; with one, what is opened is
         shown in a window.
)",
    kOptions,
    {},
    "failure: the store cannot be written, there is no session bus, another program\n"
    "has the name\n"};

void readWrite(const ProgramArguments& arguments, CommandLine& line) {
    const auto& words = arguments.words();
    if (arguments.has("container") || arguments.has("identifier")) {
        throw UsageError{R"("--container" and "--identifier" go with "run")"};
    }
    if (words.size() == 1 || words[1].empty()) {
        throw UsageError{R"("write" needs a folder)"};
    }
    if (words.size() > 2) {
        throw UsageError{"\"" + words[2] + "\" is one argument too many"};
    }
    line.command = Command::Write;
    line.folder = words[1];
    line.isVerbose = arguments.has("verbose");
}

void readRun(const ProgramArguments& arguments, CommandLine& line) {
    const auto& words = arguments.words();
    if (arguments.has("verbose")) {
        throw UsageError{R"("--verbose" goes with "write")"};
    }
    line.command = Command::Run;
    line.container = arguments.value("container");
    line.identifier = arguments.value("identifier").value_or(line.identifier);
    line.urls.assign(words.begin() + 1, words.end());
}

CommandLine interpret(const ProgramArguments& arguments) {
    if (arguments.words().empty()) {
        throw UsageError{"a command is missing"};
    }
    const std::string& command = arguments.words().front();
    CommandLine line;
    line.bundleIdentifier = arguments.value("bundle-identifier");
    if (command == "write") {
        readWrite(arguments, line);
    } else if (command == "run") {
        readRun(arguments, line);
    } else {
        throw UsageError{"there is no command \"" + command + "\""};
    }
    return line;
}

}  // namespace

std::variant<CommandLine, platform::EarlyExit> readCommandLine(std::span<char* const> arguments) {
    return platform::readArguments(kProgram, arguments, interpret);
}

}  // namespace quillet::host
