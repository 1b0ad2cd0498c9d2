#include "share/ShareCommandLine.h"

#include <array>

#include "handoff/MessageUrl.h"

namespace quillet {

namespace {

using platform::ProgramArguments;
using platform::ProgramOption;
using platform::UsageError;

constexpr std::array kOptions{
    ProgramOption{"title", "TEXT", "the subject of the message\n", 't'},
    ProgramOption{"to", "ADDRESS", "a recipient; may be given repeatedly\n", 'r'},
    ProgramOption{"html", nullptr, "take standard input or the clipboard as HTML\n"},
    ProgramOption{"text", nullptr, "take standard input or the clipboard as plain text\n"},
    ProgramOption{"service", "WORD", "stage the files in this folder, which is emptied first\n"},
    ProgramOption{"command", "WORD", "ask the mail application for this instead of \"compose\"\n"},
    ProgramOption{"print", nullptr, "print the draft's URL instead of opening it\n"},
};

constexpr platform::Program kProgram{
    "quillet-share",
    QUILLET_VERSION,
    "[OPTION]… [ITEM…]\n",
    R"(Opens a new message in the mail application that holds the items. An ITEM is a file,
a web link, or "-" for a text, HTML or a picture from standard input. Without items
the clipboard is taken.
)",
    kOptions,
    {},
    "failure: something could not be shared; what can be is shared nonetheless\n"};

ShareCommandLine interpret(const ProgramArguments& arguments) {
    ShareCommandLine line;
    line.service = arguments.value("service");
    line.command = arguments.value("command").value_or(line.command);
    line.title = arguments.value("title");
    if (arguments.has("html") && arguments.has("text")) {
        throw UsageError{R"(choose one of "--html" and "--text")"};
    }
    if (arguments.has("html") || arguments.has("text")) {
        line.textKind = arguments.has("html") ? TextKind::Html : TextKind::Plain;
    }
    line.recipients = arguments.values("to");
    line.print = arguments.has("print");
    line.items = arguments.words();
    if (line.command.empty() || !queryUrl(*ExtensionMessage::init(), line.command)) {
        throw UsageError{R"("--command" takes a plain word, not ")" + line.command + "\""};
    }
    return line;
}

}  // namespace

std::variant<ShareCommandLine, platform::EarlyExit> readShareCommandLine(
    std::span<char* const> arguments) {
    return platform::readArguments(kProgram, arguments, interpret);
}

}  // namespace quillet
