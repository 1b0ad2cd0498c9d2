#include "app/CommandLine.h"

#include <array>
#include <charconv>
#include <filesystem>
#include <optional>
#include <vector>

namespace quillet {

namespace {

using platform::ProgramArguments;
using platform::ProgramOption;
using platform::UsageError;
using Words = std::vector<std::string>;

constexpr double kSmallestScale = 0.5;
constexpr double kLargestScale = 8.0;

constexpr std::array kOptions{
    ProgramOption{"container", "DIR", "read this container; empty: there is none\n"},
    ProgramOption{"bundle-identifier",
                  "ID",
                  "act as the program with this identifier, which chooses the data\n"
                  "folder and the mail application\n"},
    ProgramOption{"dark", nullptr, "panel, snapshot: take the dark look\n"},
    ProgramOption{"light", nullptr, "panel, snapshot: take the light look\n"},
    ProgramOption{"segment",
                  "N",
                  "list, snapshot: show this segment instead of the one chosen last:\n"
                  "0 everything, 1 Inbox, 2 To Do, 3 Memo, 4 the folder with the\n"
                  "code 13, which the panel offers no segment for\n"},
    ProgramOption{"json", nullptr, "list: print one JSON object instead of text\n"},
    ProgramOption{"scale", "F", "snapshot: draw F device pixels a point, 0.5 to 8\n"},
};

constexpr std::array kEnvironment{
    platform::ProgramVariable{"QUILLET_RESOURCES", "the folder of icons and translations\n"},
    platform::ProgramVariable{"LC_ALL, LC_TIME, LANG",
                              "form of dates: the first that is set and not empty\n"},
    platform::ProgramVariable{"LANGUAGE, LC_ALL, LANG", "language of the texts\n"},
    platform::ProgramVariable{"TZ", "time zone\n"},
};

constexpr platform::Program kProgram{
    "quillet-today",
    QUILLET_VERSION,
    "[OPTION]…\n"
    "list [OPTION]…\n"
    "snapshot FILE.png [OPTION]…\n",
    R"(Shows the newest messages of the mail application in a panel at the edge of the
screen. A second start hides the panel of the first, or shows it again; so does the
icon in the tray. Escape hides the panel; where neither a tray nor a session bus could
bring it back, Escape ends the program.

Commands:
  list      print the rows that the panel shows; needs no display
  snapshot  draw the panel's contents into a picture; needs no display
)",
    kOptions,
    kEnvironment,
    "failure: there is no display for the panel, the container cannot be read,\n"
    "the picture cannot be written\n"};

// The whole text as a number; none where it is something else.
template <typename Number>
std::optional<Number> numberOf(const std::string& text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [rest, failure] = std::from_chars(text.data(), end, number);
    return failure == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

std::int64_t segmentOf(const std::string& text) {
    const auto segment = numberOf<std::int64_t>(text);
    if (!segment) {
        throw UsageError{R"("--segment" takes a whole number, not ")" + text + "\""};
    }
    return *segment;
}

double scaleOf(const std::string& text) {
    const auto scale = numberOf<double>(text);
    if (!scale || !(*scale >= kSmallestScale && *scale <= kLargestScale)) {
        throw UsageError{R"("--scale" takes a number from 0.5 to 8, not ")" + text + "\""};
    }
    return *scale;
}

// An absolute path, so that it means the same whatever the working folder; empty stays empty.
std::string containerOf(const std::string& path) {
    if (path.empty()) {
        return {};
    }
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    if (error) {
        throw UsageError{
            R"("--container" needs an absolute path where there is no working folder)"};
    }
    return absolute.string();
}

void readCommand(const Words& words, CommandLine& line) {
    if (words.empty()) {
        return;
    }
    const std::string& command = words.front();
    if (command == "list") {
        line.command = CommandLine::Command::List;
    } else if (command == "snapshot") {
        line.command = CommandLine::Command::Snapshot;
    } else {
        throw UsageError{"there is no command \"" + command + "\""};
    }
    const std::size_t wanted = line.command == CommandLine::Command::Snapshot ? 2 : 1;
    if (words.size() < wanted || words[wanted - 1].empty()) {
        throw UsageError{R"("snapshot" needs the name of the file to write)"};
    }
    if (words.size() > wanted) {
        throw UsageError{"\"" + words[wanted] + "\" is one argument too many"};
    }
    if (wanted > 1) {
        line.picture = words[1];
    }
}

void readOptions(const ProgramArguments& arguments, CommandLine& line) {
    if (const auto container = arguments.value("container")) {
        line.container = containerOf(*container);
    }
    line.bundleIdentifier = arguments.value("bundle-identifier");
    if (arguments.has("dark") || arguments.has("light")) {
        line.look = arguments.has("dark") ? platform::Look::Dark : platform::Look::Light;
    }
    if (const auto segment = arguments.value("segment")) {
        line.segment = segmentOf(*segment);
    }
    if (const auto scale = arguments.value("scale")) {
        line.scale = scaleOf(*scale);
    }
    line.json = arguments.has("json");
}

// Options that the command has no use for are refused rather than ignored.
void checkOptions(const ProgramArguments& arguments, const CommandLine& line) {
    const bool list = line.command == CommandLine::Command::List;
    const bool snapshot = line.command == CommandLine::Command::Snapshot;
    if (arguments.has("dark") && arguments.has("light")) {
        throw UsageError{R"(choose one of "--dark" and "--light")"};
    }
    if (line.look && list) {
        throw UsageError{R"("--dark" and "--light" go with the panel and "snapshot")"};
    }
    if (line.json && !list) {
        throw UsageError{R"("--json" goes with "list")"};
    }
    if (arguments.has("scale") && !snapshot) {
        throw UsageError{R"("--scale" goes with "snapshot")"};
    }
    if (line.segment && !list && !snapshot) {
        throw UsageError{R"("--segment" goes with "list" and "snapshot")"};
    }
}

CommandLine interpret(const ProgramArguments& arguments) {
    CommandLine line;
    readCommand(arguments.words(), line);
    readOptions(arguments, line);
    checkOptions(arguments, line);
    return line;
}

}  // namespace

std::variant<CommandLine, platform::EarlyExit> readCommandLine(std::span<char* const> arguments) {
    return platform::readArguments(kProgram, arguments, interpret);
}

}  // namespace quillet
