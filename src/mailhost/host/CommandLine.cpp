#include "mailhost/host/CommandLine.h"

#include <algorithm>
#include <array>

#include "platform/base/Ascii.h"

namespace quillet::mailhost {

namespace {

using platform::ProgramArguments;
using platform::ProgramOption;
using platform::UsageError;

constexpr std::array kOptions{
    ProgramOption{"config",
                  "FILE",
                  "read this configuration instead of\n"
                  "~/.config/quillet/mail-host.conf\n"},
    ProgramOption{"container", "DIR", "write this container\n"},
    ProgramOption{"identifier",
                  "ID",
                  "the name on the session bus, \"it.tarno.quillet\" by default; one that\n"
                  "begins with \"it.tarno.quillet.beta\" has its own data folder\n"},
    ProgramOption{"once", nullptr, "write the container once and end\n"},
    ProgramOption{"detect",
                  nullptr,
                  "print the configuration that says what is found without one, and end\n"},
    ProgramOption{"log",
                  nullptr,
                  "print one JSON object a line for each command and each file that changes\n"},
};

constexpr platform::Program kProgram{
    "quillet-mail-host",
    QUILLET_VERSION,
    "[OPTION]… [URL]…\n",
    R"(Shows the newest messages of Maildir folders in the Today panel, and archives and deletes
there when the panel asks for it. Without a configuration file it looks for the accounts of
mbsync and notmuch, and for Maildir folders in the usual places. URLs are commands of the
panel; if the host is running already, it gets them.
)",
    kOptions,
    {},
    "the configuration is wrong, no account is found (--detect), another host is\n"
    "running, there is no session bus, or the container cannot be written\n",
};

// Whether a text can be a name on the session bus, which is also the name of a folder.
bool isIdentifierOfProgram(const std::string& text) {
    constexpr std::size_t kLongest = 255;
    const auto isAllowed = [](char character) {
        return platform::isAsciiAlphanumeric(character) || character == '-' || character == '_' ||
               character == '.';
    };
    return text.size() <= kLongest && std::all_of(text.begin(), text.end(), isAllowed) &&
           text.find('.') != std::string::npos && !text.starts_with('.') && !text.ends_with('.') &&
           text.find("..") == std::string::npos;
}

CommandLine interpret(const ProgramArguments& arguments) {
    CommandLine line;
    line.urls = arguments.words();
    line.configuration = arguments.value("config");
    line.container = arguments.value("container");
    line.identifier = arguments.value("identifier").value_or(line.identifier);
    line.logs = arguments.has("log");
    if (!isIdentifierOfProgram(line.identifier)) {
        throw UsageError{"\"" + line.identifier + "\" is no identifier, such as it.tarno.quillet"};
    }
    if (arguments.has("once") && arguments.has("detect")) {
        throw UsageError{R"("--once" and "--detect" do not go together)"};
    }
    for (const char* const option : {"config", "container", "identifier", "log"}) {
        if (arguments.has("detect") && arguments.has(option)) {
            throw UsageError{R"("--detect" and "--)" + std::string(option) +
                             "\" do not go together"};
        }
    }
    if (arguments.has("once")) {
        line.task = CommandLine::Task::Once;
    } else if (arguments.has("detect")) {
        line.task = CommandLine::Task::Detect;
    }
    if (line.task != CommandLine::Task::Run && !line.urls.empty()) {
        throw UsageError{"\"" + line.urls.front() + "\" is one argument too many"};
    }
    return line;
}

}  // namespace

std::variant<CommandLine, platform::EarlyExit> readCommandLine(std::span<char* const> arguments) {
    return platform::readArguments(kProgram, arguments, interpret);
}

}  // namespace quillet::mailhost
