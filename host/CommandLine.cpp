#include "host/CommandLine.h"

#include <array>
#include <string_view>
#include <utility>

namespace quillet::host {

namespace {

using Command = CommandLine::Command;

constexpr std::string_view kUsage =
    R"(Usage: quillet-sample-host write DIR [--bundle-identifier ID] [--verbose]
       quillet-sample-host run [--container DIR] [--identifier ID] [--bundle-identifier ID] [URL]…

write   writes a sample mail store into the container DIR, making it where it is missing and
        replacing files of the same name, then tells a running Today widget to read it
run     is the mail application: waits on the session bus for what the widget asks, carries it out
        on the container and prints one line of JSON for each command; the URLs are opened first.
        A second start hands its URLs to the first.

Options:
  --bundle-identifier ID   be the host of the widget with this identifier; one that begins with
                           "it.tarno.quillet.beta" has its own data folder
  --container DIR          run: work on this container; otherwise on the user's
  --identifier ID          run: the name on the session bus, "it.tarno.quillet" by default; chooses
                           the data folder as well, unless --bundle-identifier is given
  --verbose                write: name the files, and say whether the widget could be told
  --help                   show this text
  --version                tell the version
)";

struct UsageError {
    std::string text;
};

// The options that stand among the arguments, and the other words.
struct Words {
    std::vector<std::string> others;
    std::optional<std::string> bundleIdentifier;
    std::optional<std::string> container;
    std::optional<std::string> identifier;
    bool isVerbose = false;
    bool wantsHelp = false;
    bool wantsVersion = false;
};

// The place of an option's value; null where no option with a value has this name.
std::optional<std::string>* valueOf(std::string_view name, Words& words) {
    const std::array<std::pair<std::string_view, std::optional<std::string>*>, 3> options{
        {{"--bundle-identifier", &words.bundleIdentifier},
         {"--container", &words.container},
         {"--identifier", &words.identifier}}};
    for (const auto& [option, value] : options) {
        if (name == option) {
            return value;
        }
    }
    return nullptr;
}

// Reads the option at `index`, which moves on to its value where that is the next argument.
void readOption(std::span<char* const> arguments, std::size_t& index, Words& words) {
    const std::string_view word = arguments[index];
    const std::size_t equals = word.find('=');
    const std::string name(word.substr(0, equals));
    if (auto* value = valueOf(name, words)) {
        if (equals == std::string_view::npos && index + 1 == arguments.size()) {
            throw UsageError{name + " needs a value"};
        }
        *value = equals == std::string_view::npos ? arguments[++index] : word.substr(equals + 1);
    } else if (word == "--help" || word == "-h") {
        words.wantsHelp = true;
    } else if (word == "--version") {
        words.wantsVersion = true;
    } else if (word == "--verbose") {
        words.isVerbose = true;
    } else {
        throw UsageError{"there is no option " + std::string(word)};
    }
}

Words wordsOf(std::span<char* const> arguments) {
    Words words;
    for (std::size_t index = 1; index < arguments.size(); ++index) {
        const std::string_view word = arguments[index];
        if (word.starts_with("-")) {
            readOption(arguments, index, words);
        } else {
            words.others.emplace_back(word);
        }
    }
    return words;
}

void readWrite(const Words& words, CommandLine& line) {
    if (words.container || words.identifier) {
        throw UsageError{"--container and --identifier go with \"run\""};
    }
    if (words.others.size() == 1 || words.others[1].empty()) {
        throw UsageError{"\"write\" needs a folder"};
    }
    if (words.others.size() > 2) {
        throw UsageError{"\"write\" takes one folder"};
    }
    line.command = Command::Write;
    line.folder = words.others[1];
    line.isVerbose = words.isVerbose;
}

void readRun(const Words& words, CommandLine& line) {
    if (words.isVerbose) {
        throw UsageError{"--verbose goes with \"write\""};
    }
    line.command = Command::Run;
    line.container = words.container;
    line.identifier = words.identifier.value_or(line.identifier);
    line.urls.assign(words.others.begin() + 1, words.others.end());
}

CommandLine commandLineOf(const Words& words) {
    if (words.others.empty()) {
        throw UsageError{"a command is missing"};
    }
    CommandLine line;
    line.bundleIdentifier = words.bundleIdentifier;
    if (words.others[0] == "write") {
        readWrite(words, line);
    } else if (words.others[0] == "run") {
        readRun(words, line);
    } else {
        throw UsageError{"there is no command \"" + words.others[0] + "\""};
    }
    return line;
}

}  // namespace

std::variant<CommandLine, EarlyExit> readCommandLine(std::span<char* const> arguments) {
    try {
        const Words words = wordsOf(arguments);
        if (words.wantsHelp) {
            return EarlyExit{kSuccess, std::string(kUsage)};
        }
        if (words.wantsVersion) {
            return EarlyExit{kSuccess, "quillet-sample-host " QUILLET_VERSION "\n"};
        }
        return commandLineOf(words);
    } catch (const UsageError& error) {
        return EarlyExit{kWrongUsage,
                         "quillet-sample-host: " + error.text + "\n\n" + std::string(kUsage)};
    }
}

}  // namespace quillet::host
