#include "share/ShareCommandLine.h"

#include <getopt.h>
#include <iterator>

#include "handoff/MessageUrl.h"

namespace quillet {

namespace {

constexpr int kWrongUsage = 2;

constexpr const char* kHelp =
    R"(Usage: quillet-share [OPTION]… [ITEM…]

Opens a new message in the mail application that holds the items. An ITEM is a file,
a web link, or "-" for a text, HTML or a picture from standard input. Without items
the clipboard is taken.

Options:
  -t, --title TEXT     the subject of the message
  -r, --to ADDRESS     a recipient; may be given repeatedly
      --html           take standard input or the clipboard as HTML
      --text           take standard input or the clipboard as plain text
      --service WORD   stage the files in this folder, which is emptied first
      --command WORD   ask the mail application for this instead of "compose"
      --print          print the draft's URL instead of opening it
  -h, --help           print this text
  -v, --version        print the version
)";

enum LongOption { kService = 256, kCommand, kHtml, kText, kPrint };

constexpr option kOptions[] = {
    {"service", required_argument, nullptr, kService},
    {"command", required_argument, nullptr, kCommand},
    {"title", required_argument, nullptr, 't'},
    {"html", no_argument, nullptr, kHtml},
    {"text", no_argument, nullptr, kText},
    {"to", required_argument, nullptr, 'r'},
    {"print", no_argument, nullptr, kPrint},
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, 'v'},
    {nullptr, 0, nullptr, 0},
};

ShareEarlyExit wrongUsage(const std::string& reason) {
    return {kWrongUsage, "quillet-share: " + reason + "\nTry \"quillet-share --help\".\n"};
}

// The options that take effect at once, or the reason why the word read is none.
ShareEarlyExit exitOf(int found, const std::string& word) {
    switch (found) {
        case 'h':
            return {0, kHelp};
        case 'v':
            return {0, "quillet-share " QUILLET_VERSION "\n"};
        case ':':
            return wrongUsage("\"" + word + "\" needs a value");
        default:
            return wrongUsage("there is no option \"" + word + "\" of that form");
    }
}

// Takes one option over; false for those that end the reading.
bool apply(int found, ShareCommandLine& line) {
    switch (found) {
        case kService:
            line.service = optarg;
            return true;
        case kCommand:
            line.command = optarg;
            return true;
        case 't':
            line.title = optarg;
            return true;
        case kHtml:
            line.textKind = TextKind::Html;
            return true;
        case kText:
            line.textKind = TextKind::Plain;
            return true;
        case 'r':
            line.recipients.emplace_back(optarg);
            return true;
        case kPrint:
            line.print = true;
            return true;
        default:
            return false;
    }
}

}  // namespace

std::variant<ShareCommandLine, ShareEarlyExit> readShareCommandLine(
    std::span<char* const> arguments) {
    // The function orders the words it is given, options first.
    std::vector<char*> words(arguments.begin(), arguments.end());
    const auto count = static_cast<int>(words.size());
    words.push_back(nullptr);
    ShareCommandLine line;
    bool isHtml = false;
    bool isText = false;
    optind = 0;  // a fresh start
    for (;;) {
        const int found = getopt_long(count, words.data(), ":t:r:hv", kOptions, nullptr);
        if (found == -1) {
            break;
        }
        if (!apply(found, line)) {
            return exitOf(found, words[static_cast<std::size_t>(optind) - 1]);
        }
        isHtml = isHtml || found == kHtml;
        isText = isText || found == kText;
    }
    line.items.assign(words.begin() + optind, words.begin() + count);
    if (isHtml && isText) {
        return wrongUsage("choose one of --html and --text");
    }
    if (line.command.empty() || !queryUrl(*ExtensionMessage::init(), line.command)) {
        return wrongUsage("--command takes a plain word, not \"" + line.command + "\"");
    }
    return line;
}

}  // namespace quillet
