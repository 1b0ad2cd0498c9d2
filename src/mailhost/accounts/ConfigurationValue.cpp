#include "mailhost/accounts/ConfigurationValue.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/base/Ascii.h"

namespace quillet::mailhost {

namespace {

using platform::trimmed;
using platform::trimmedStart;

constexpr std::array<std::pair<Layout, std::string_view>, 5> kLayoutNames{
    {{Layout::Auto, "auto"},
     {Layout::Verbatim, "verbatim"},
     {Layout::MaildirPlusPlus, "maildir++"},
     {Layout::Legacy, "legacy"},
     {Layout::KMail, "kmail"}}};

bool isCommentAt(std::string_view text, std::size_t at) {
    return text[at] == '#' && at > 0 &&
           kConfigurationBlanks.find(text[at - 1]) != std::string_view::npos;
}

// Takes a quoted item with its quotes from the start of `rest`. None if it does not end.
std::optional<std::string> takeQuoted(std::string_view& rest) {
    std::string text;
    for (std::size_t at = 1; at < rest.size(); ++at) {
        if (rest[at] == '"') {
            rest.remove_prefix(at + 1);
            return text;
        }
        const bool isEscape = rest[at] == '\\' && at + 1 < rest.size() &&
                              (rest[at + 1] == '"' || rest[at + 1] == '\\');
        at += isEscape ? 1 : 0;
        text += rest[at];
    }
    return std::nullopt;
}

// Takes a plain item from the start of `rest`, and a comment behind it.
std::string takePlain(std::string_view& rest, bool isList) {
    std::size_t end = 0;
    while (end < rest.size() && !(isList && rest[end] == ',') && !isCommentAt(rest, end)) {
        ++end;
    }
    std::string text(trimmed(rest.substr(0, end), kConfigurationBlanks));
    rest.remove_prefix(end < rest.size() && rest[end] == '#' ? rest.size() : end);
    return text;
}

// Leaves nothing, or what follows from the next comma on. False if something else is there.
bool skipToNextItem(std::string_view& rest, bool isList) {
    const std::size_t next = std::min(rest.find_first_not_of(kConfigurationBlanks), rest.size());
    const bool isEnd = next == rest.size() || isCommentAt(rest, next);
    rest.remove_prefix(isEnd ? rest.size() : next);
    return isEnd || (isList && rest.front() == ',');
}

ConfigurationItems readItems(std::string_view rest, bool isList) {
    ConfigurationItems read;
    for (;;) {
        const std::string_view start = trimmedStart(rest, kConfigurationBlanks);
        if (start.starts_with('"')) {
            rest = start;
            std::optional<std::string> text = takeQuoted(rest);
            if (!text) {
                read.problem = "the closing quote is missing";
                return read;
            }
            read.items.push_back({std::move(*text), true});
            if (!skipToNextItem(rest, isList)) {
                read.problem = "text follows the closing quote";
                return read;
            }
        } else {
            read.items.push_back({takePlain(rest, isList), false});
        }
        if (rest.empty()) {
            return read;
        }
        rest.remove_prefix(1);
    }
}

// Where the comment of a command line begins, by the shell's quotes; its size if there is none.
std::size_t commandLength(std::string_view command) {
    char quote = 0;
    for (std::size_t at = 0; at < command.size(); ++at) {
        const char character = command[at];
        if (character == '\\' && quote != '\'') {
            ++at;
        } else if (quote != 0) {
            quote = character == quote ? '\0' : quote;
        } else if (character == '"' || character == '\'') {
            quote = character;
        } else if (isCommentAt(command, at)) {
            return at;
        }
    }
    return command.size();
}

}  // namespace

ConfigurationItems readConfigurationValue(std::string_view value) {
    return readItems(value, false);
}

ConfigurationItems readConfigurationList(std::string_view value) {
    return readItems(value, true);
}

std::string readConfigurationCommand(std::string_view value) {
    ConfigurationItems whole = readItems(value, false);
    if (whole.problem.empty() && whole.items.front().isQuoted) {
        return std::move(whole.items.front().text);
    }
    return std::string(trimmed(value.substr(0, commandLength(value)), kConfigurationBlanks));
}

std::string quotedConfigurationItem(std::string_view text) {
    std::string quoted = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            quoted += '\\';
        }
        quoted += character;
    }
    return quoted + "\"";
}

std::string configurationItemText(std::string_view text) {
    const bool isPlain = !text.empty() && text.find_first_of("#\",\\") == std::string_view::npos &&
                         trimmed(text, kConfigurationBlanks) == text;
    return isPlain ? std::string(text) : quotedConfigurationItem(text);
}

std::string_view layoutName(Layout layout) {
    return std::find_if(kLayoutNames.begin(),
                        kLayoutNames.end(),
                        [layout](const auto& entry) { return entry.first == layout; })
        ->second;
}

std::optional<Layout> layoutOfName(std::string_view name) {
    for (const auto& [layout, text] : kLayoutNames) {
        if (platform::equalsIgnoringAsciiCase(text, name)) {
            return layout;
        }
    }
    return std::nullopt;
}

}  // namespace quillet::mailhost
