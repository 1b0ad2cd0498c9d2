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
    const char* value;  // its value's name in the help; null: the option takes no value
    const char* meaning;
    char letter = '\0';  // its short form, or '\0'
};

struct ProgramVariable {
    const char* name;  // of one environment variable or several
    const char* meaning;
};

// What a program says about itself. Texts of several lines have a line break at the end of each
// line. The help adds what all programs share: --help, --version, the container and its
// environment.
struct Program {
    const char* name;
    const char* version;
    const char* usage;        // one line for each form of the command, without the name
    const char* description;  // what it does
    std::span<const ProgramOption> options;
    std::span<const ProgramVariable> environment;
    const char* failure;  // what the exit status 1 means
};

// What is wrong with the arguments; quotes what the user typed.
struct UsageError {
    std::string text;
};

// A text to print and an exit status, for a program that ends instead of running.
struct EarlyExit {
    int status = kSuccess;
    std::string text;
};

// The arguments of a program, split into options and other words; bytes of any encoding. An option
// is "--name", "--name=value", "--name value", "-l", "-lvalue" or "-l value"; letters without a
// value may share a dash. Options and words may come in any order. Everything after "--" is a word,
// and so is "-". Names cannot be abbreviated.
class ProgramArguments {
public:
    // `arguments` are those of main(). Words after --help or --version are not read. Throws
    // UsageError.
    ProgramArguments(const Program& program, std::span<char* const> arguments);

    bool has(std::string_view name) const { return !values(name).empty(); }
    // The value that was given last, or none.
    std::optional<std::string> value(std::string_view name) const;
    // All values in the given order; empty texts if the option takes no value.
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

// Reads a command line. Returns interpret(arguments), or how to end because of --help, --version or
// a UsageError, which `interpret` may throw too.
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

// Prints the text, to standard error unless the status is kSuccess. Returns the status to exit
// with.
int finish(const EarlyExit& exit);

}  // namespace quillet::platform
