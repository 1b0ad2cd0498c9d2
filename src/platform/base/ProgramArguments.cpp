#include "platform/base/ProgramArguments.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "platform/base/Ascii.h"
#include "platform/base/StandardError.h"

namespace quillet::platform {

namespace {

constexpr ProgramOption kCommonOptions[] = {
    {"help", nullptr, "print this text\n", 'h'},
    {"version", nullptr, "print the version\n", 'v'},
};

constexpr ProgramVariable kCommonEnvironment[] = {
    {"QUILLET_CONTAINER", "the container; empty: there is none\n"},
    {"QUILLET_BUNDLE_IDENTIFIER",
     "act as the program with this identifier, which chooses the\n"
     "data folder and the mail application; empty: none\n"},
};

constexpr const char* kContainer = R"(
The container is the folder that the mail application shares with its extensions, by
default ~/.local/share/group-containers/Q7K2M9X4TB.quillet; XDG_DATA_HOME stands in for
~/.local/share where it is set.
)";

std::vector<ProgramOption> allOptions(const Program& program) {
    std::vector<ProgramOption> options(program.options.begin(), program.options.end());
    options.insert(options.end(), std::begin(kCommonOptions), std::end(kCommonOptions));
    return options;
}

std::string quoted(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

// The option as the help shows it.
std::string titleOf(const ProgramOption& option) {
    std::string title = option.letter != '\0' ? std::string("-") + option.letter + ", " : "    ";
    title.append("--").append(option.name);
    return option.value != nullptr ? title.append(" ").append(option.value) : title;
}

using Rows = std::vector<std::pair<std::string, std::string_view>>;

// A title and two columns: names and their meanings, which may have several lines.
std::string table(const char* title, const Rows& rows) {
    std::size_t width = 0;
    for (const auto& row : rows) {
        width = std::max(width, row.first.size());
    }
    std::string text = title;
    for (auto [name, meaning] : rows) {
        for (; !meaning.empty(); name.clear()) {
            const std::string_view line = meaning.substr(0, meaning.find('\n') + 1);
            meaning.remove_prefix(line.size());
            name.resize(width, ' ');
            text.append("  ").append(name).append("  ").append(line);
        }
    }
    return text;
}

std::string optionTable(const Program& program) {
    Rows rows;
    for (const ProgramOption& option : allOptions(program)) {
        rows.emplace_back(titleOf(option), option.meaning);
    }
    return table("\nOptions:\n", rows);
}

std::string environmentTable(const Program& program) {
    Rows rows;
    for (const ProgramVariable& variable : kCommonEnvironment) {
        rows.emplace_back(variable.name, variable.meaning);
    }
    for (const ProgramVariable& variable : program.environment) {
        rows.emplace_back(variable.name, variable.meaning);
    }
    return table("\nEnvironment:\n", rows);
}

// "Usage: NAME …", with further forms below the first.
std::string usageOf(const Program& program) {
    std::string text;
    for (std::string_view rest = program.usage; !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find('\n') + 1);
        rest.remove_prefix(line.size());
        text.append(text.empty() ? "Usage: " : "       ").append(program.name);
        text.append(" ").append(line);
    }
    return text;
}

// Reads the arguments one by one.
class Reader {
public:
    Reader(const Program& program, std::span<char* const> arguments)
        : options_(allOptions(program)), rest_(arguments.subspan(arguments.empty() ? 0 : 1)) {}

    bool atEnd() const { return rest_.empty(); }
    std::string_view next() {
        const std::string_view word = rest_.front();
        rest_ = rest_.subspan(1);
        return word;
    }

    // Calls `take` with each option of the word and its value.
    template <typename Take>
    void readOptions(std::string_view word, Take take) {
        if (word.starts_with("--")) {
            readName(word, take);
        } else {
            readLetters(word, take);
        }
    }

private:
    template <typename Take>
    void readName(std::string_view word, Take take) {
        const std::size_t equals = std::min(word.find('='), word.size());
        const std::string_view typed = word.substr(0, equals);
        const ProgramOption& option = find(
            typed, [typed](const ProgramOption& each) { return typed.substr(2) == each.name; });
        const bool hasValue = equals < word.size();
        if (option.value == nullptr && hasValue) {
            throw UsageError{quoted(typed) + " takes no value"};
        }
        take(option, hasValue ? word.substr(equals + 1) : valueAfter(typed, option));
    }

    template <typename Take>
    void readLetters(std::string_view word, Take take) {
        for (std::size_t at = 1; at < word.size(); ++at) {
            const std::string typed =
                isAscii(word[at]) ? std::string("-") + word[at] : std::string(word);
            const ProgramOption& option =
                find(typed, [&](const ProgramOption& each) { return word[at] == each.letter; });
            if (option.value != nullptr && at + 1 < word.size()) {
                take(option, word.substr(at + 1));
                return;
            }
            take(option, valueAfter(typed, option));
        }
    }

    template <typename Predicate>
    const ProgramOption& find(std::string_view typed, Predicate predicate) const {
        const auto found = std::find_if(options_.begin(), options_.end(), predicate);
        if (found == options_.end()) {
            throw UsageError{"there is no option " + quoted(typed)};
        }
        return *found;
    }

    std::string_view valueAfter(std::string_view typed, const ProgramOption& option) {
        if (option.value == nullptr) {
            return {};
        }
        if (atEnd()) {
            throw UsageError{quoted(typed) + " needs a value"};
        }
        return next();
    }

    std::vector<ProgramOption> options_;
    std::span<char* const> rest_;
};

}  // namespace

ProgramArguments::ProgramArguments(const Program& program, std::span<char* const> arguments) {
    Reader reader(program, arguments);
    const auto take = [this](const ProgramOption& option, std::string_view value) {
        options_.push_back({option.name, std::string(value)});
    };
    bool areOptionsOver = false;
    while (!reader.atEnd() && !has("help") && !has("version")) {
        const std::string_view word = reader.next();
        if (areOptionsOver || word.size() < 2 || word[0] != '-') {
            words_.emplace_back(word);
        } else if (word == "--") {
            areOptionsOver = true;
        } else {
            reader.readOptions(word, take);
        }
    }
}

std::optional<std::string> ProgramArguments::value(std::string_view name) const {
    std::vector<std::string> all = values(name);
    return all.empty() ? std::nullopt : std::optional(std::move(all.back()));
}

std::vector<std::string> ProgramArguments::values(std::string_view name) const {
    std::vector<std::string> values;
    for (const Given& option : options_) {
        if (option.name == name) {
            values.push_back(option.value);
        }
    }
    return values;
}

EarlyExit helpOf(const Program& program) {
    const Rows statuses{{"0", "success\n"}, {"1", program.failure}, {"2", "wrong usage\n"}};
    return {kSuccess,
            usageOf(program) + "\n" + program.description + optionTable(program) + kContainer +
                environmentTable(program) + table("\nExit status:\n", statuses)};
}

EarlyExit versionOf(const Program& program) {
    return {kSuccess, std::string(program.name) + " " + program.version + "\n"};
}

EarlyExit wrongUsage(const Program& program, const UsageError& error) {
    const std::string name = program.name;
    return {kWrongUsage,
            printableLine(name + ": " + error.text) + "\nTry " + quoted(name + " --help") + ".\n"};
}

int finish(const EarlyExit& exit) {
    std::FILE* const stream = exit.status == kSuccess ? stdout : stderr;
    const bool isPrinted = std::fputs(exit.text.c_str(), stream) >= 0 && std::fflush(stream) == 0;
    return isPrinted ? exit.status : std::max(exit.status, kFailure);
}

}  // namespace quillet::platform
