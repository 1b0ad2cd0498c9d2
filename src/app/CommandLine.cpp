#include "app/CommandLine.h"

#include <array>
#include <charconv>
#include <filesystem>
#include <limits>
#include <optional>
#include <vector>

namespace quillet {

namespace {

using platform::ProgramArguments;
using platform::ProgramOption;
using platform::UsageError;

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

// The value of an option as a number. Throws UsageError with what the option takes if the text is
// not a number in the range.
template <typename Number>
Number numberOf(const std::string& text, const char* taken, Number least, Number most) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [rest, failure] = std::from_chars(text.data(), end, number);
    if (failure != std::errc() || rest != end || !(number >= least && number <= most)) {
        throw UsageError{taken + (", not \"" + text) + "\""};
    }
    return number;
}

// The path made absolute, so that it does not depend on the working folder; "" stays "".
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

void readCommand(const std::vector<std::string>& words, CommandLine& line) {
    if (words.empty()) {
        return;
    }
    const bool isSnapshot = words[0] == "snapshot";
    if (!isSnapshot && words[0] != "list") {
        throw UsageError{"there is no command \"" + words[0] + "\""};
    }
    line.command = isSnapshot ? CommandLine::Command::Snapshot : CommandLine::Command::List;
    const std::size_t wanted = isSnapshot ? 2 : 1;
    if (isSnapshot && (words.size() < wanted || words[1].empty())) {
        throw UsageError{R"("snapshot" needs the name of the file to write)"};
    }
    if (words.size() > wanted) {
        throw UsageError{"\"" + words[wanted] + "\" is one argument too many"};
    }
    line.picture = isSnapshot ? words[1] : "";
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
        line.segment = numberOf(*segment,
                                R"("--segment" takes a whole number)",
                                std::numeric_limits<std::int64_t>::min(),
                                std::numeric_limits<std::int64_t>::max());
    }
    if (const auto scale = arguments.value("scale")) {
        line.scale = numberOf(*scale, R"("--scale" takes a number from 0.5 to 8)", 0.5, 8.0);
    }
    line.json = arguments.has("json");
}

// Options that the command has no use for are refused rather than ignored.
void checkOptions(const ProgramArguments& arguments, const CommandLine& line) {
    const bool list = line.command == CommandLine::Command::List;
    const bool snapshot = line.command == CommandLine::Command::Snapshot;
    const auto refuse = [](bool isWrong, const char* reason) {
        if (isWrong) {
            throw UsageError{reason};
        }
    };
    refuse(arguments.has("dark") && arguments.has("light"),
           R"(choose one of "--dark" and "--light")");
    refuse(line.look && list, R"("--dark" and "--light" go with the panel and "snapshot")");
    refuse(line.json && !list, R"("--json" goes with "list")");
    refuse(arguments.has("scale") && !snapshot, R"("--scale" goes with "snapshot")");
    refuse(line.segment && !list && !snapshot, R"("--segment" goes with "list" and "snapshot")");
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
