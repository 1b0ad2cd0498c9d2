#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace quillet::platform {

// Exit statuses of all programs.
inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1;
inline constexpr int kWrongUsage = 2;

struct ProgramOption {
    const char* name;   // without the two dashes
    const char* value;  // what the help calls its value; null: it takes none
    const char* meaning;
    char letter = '\0';  // its short form; '\0': none
};

struct ProgramVariable {
    const char* name;  // of an environment variable, or several
    const char* meaning;
};

// What a program tells of itself. Longer texts are lines that end in a line break each. The help
// adds what is the same in all programs: --help, --version, the container and its environment.
struct Program {
    const char* name;
    const char* version;
    const char* usage;        // a line for each form of the command, without the name
    const char* description;  // what it does
    std::span<const ProgramOption> options;
    std::span<const ProgramVariable> environment;
    const char* failure;  // what the exit status 1 means
};

// Why the arguments cannot be followed: what the user typed, in double quotes, and what is wrong.
struct UsageError {
    std::string text;
};

// Text to print and the exit status to end with, instead of running.
struct EarlyExit {
    int status = kSuccess;
    std::string text;
};

// The arguments of a program, sorted into options and other words; bytes of any encoding. An option
// is "--name", "--name=value", "--name value", "-l", "-lvalue" or "-l value"; letters without a
// value may share a dash. Options and words stand in any order; all behind "--" are words, and so
// is "-". Names are not abbreviated.
class ProgramArguments {
public:
    // `arguments` as main has them. Throws UsageError. Nothing behind --help or --version is read.
    ProgramArguments(const Program& program, std::span<char* const> arguments);

    bool has(std::string_view name) const { return !values(name).empty(); }
    // That of the last one given; none where the option is not there.
    std::optional<std::string> value(std::string_view name) const;
    // Those of all, in their order; empty texts where the option takes none.
    std::vector<std::string> values(std::string_view name) const;
    const std::vector<std::string>& words() const { return words_; }

private:
    struct Given {
        std::string_view name;
        std::string value;
    };

    std::vector<Given> options_;
    std::vector<std::string> words_;
};

EarlyExit helpOf(const Program& program);
EarlyExit versionOf(const Program& program);
EarlyExit wrongUsage(const Program& program, const UsageError& error);

// Reads a command line: what `interpret` makes of the arguments, or how to end because of --help,
// --version or a UsageError, which `interpret` may throw as well.
template <typename Interpret>
std::variant<std::invoke_result_t<Interpret, const ProgramArguments&>, EarlyExit> readArguments(
    const Program& program, std::span<char* const> arguments, Interpret interpret) {
    try {
        const ProgramArguments read(program, arguments);
        if (read.has("help")) {
            return helpOf(program);
        }
        if (read.has("version")) {
            return versionOf(program);
        }
        return interpret(read);
    } catch (const UsageError& error) {
        return wrongUsage(program, error);
    }
}

// Prints the text, that of wrong usage to standard error; the status to end with.
int finish(const EarlyExit& exit);

}  // namespace quillet::platform
