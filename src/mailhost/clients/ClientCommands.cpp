#include "mailhost/clients/ClientCommands.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <span>

#include "mailhost/clients/MailtoUrl.h"

#include "platform/base/Ascii.h"
#include "platform/base/StandardError.h"
#include "platform/base/Utf8.h"
#include "platform/url/PercentEncoding.h"

namespace quillet::mailhost {

namespace {

struct ClientName {
    std::string_view name;
    Client client;
};

constexpr std::array kConfigured{ClientName{"thunderbird", Client::Thunderbird},
                                 ClientName{"evolution", Client::Evolution},
                                 ClientName{"kmail", Client::KMail},
                                 ClientName{"neomutt", Client::NeoMutt}};
// Names of desktop entries, as distributions and software portals write them.
constexpr std::array kEntries{ClientName{"thunderbird", Client::Thunderbird},
                              ClientName{"thunderbird-esr", Client::Thunderbird},
                              ClientName{"thunderbird_thunderbird", Client::Thunderbird},
                              ClientName{"mozilla-thunderbird", Client::Thunderbird},
                              ClientName{"net.thunderbird.Thunderbird", Client::Thunderbird},
                              ClientName{"org.mozilla.Thunderbird", Client::Thunderbird},
                              ClientName{"evolution", Client::Evolution},
                              ClientName{"org.gnome.Evolution", Client::Evolution},
                              ClientName{"kmail", Client::KMail},
                              ClientName{"kmail2", Client::KMail},
                              ClientName{"org.kde.kmail", Client::KMail},
                              ClientName{"org.kde.kmail2", Client::KMail},
                              ClientName{"mutt", Client::NeoMutt},
                              ClientName{"neomutt", Client::NeoMutt},
                              ClientName{"notmuch", Client::Notmuch},
                              ClientName{"notmuch-emacs-mua", Client::Notmuch},
                              ClientName{"mu4e", Client::Mu4e}};

template <std::size_t size>
std::optional<Client> clientIn(const std::array<ClientName, size>& names, std::string_view name) {
    const auto found = std::find_if(names.begin(), names.end(), [name](const ClientName& each) {
        return platform::equalsIgnoringAsciiCase(each.name, name);
    });
    return found == names.end() ? std::nullopt : std::optional(found->client);
}

// How a program is called without a desktop entry.
Command usualCommand(Client client, const Command& words) {
    switch (client) {
        case Client::Thunderbird:
            return platform::commandOf({{}, {}, {"thunderbird"}}, words);
        case Client::Evolution:
            return platform::commandOf({{}, {}, {"evolution"}}, words);
        case Client::KMail:
            return platform::commandOf({{}, {}, {"kmail"}}, words);
        case Client::NeoMutt:
            return platform::commandOf({{}, {}, {"neomutt"}, true}, words);
        case Client::Notmuch:
        case Client::Mu4e:
            break;
    }
    return platform::commandOf({{}, {}, {"emacsclient", "--create-frame", "--no-wait"}}, words);
}

Command commandWith(const ClientProgram& program, const Command& words) {
    return program.application ? platform::commandOf(*program.application, words)
                               : usualCommand(program.client, words);
}

// `text` with a backslash before each character of `special`.
std::string escaped(std::string_view text, std::string_view special) {
    std::string result;
    for (const char character : text) {
        if (special.find(character) != std::string_view::npos) {
            result += '\\';
        }
        result += character;
    }
    return result;
}

// The keys that show one message. NeoMutt reads them three times: as a text in double quotes, in
// which "`" would run a shell, "$" and "^" stand for other texts; as a pattern, whose single quotes
// keep everything as it is; and as a regular expression for the whole header.
std::string neoMuttKeys(std::string_view messageId) {
    constexpr std::string_view kRegexSpecial = R"(\.[]{}()*+?^$|)";
    constexpr std::string_view kQuotedSpecial = R"(\"`$^)";
    const std::string regex = "^.?" + escaped(messageId, kRegexSpecial) + ".?$";
    return "push \"<limit>~i '" + escaped(regex, kQuotedSpecial) + "'<enter><display-message>\"";
}

// A Lisp string.
std::string lispText(std::string_view text) {
    return "\"" + escaped(text, "\\\"") + "\"";
}

Command emacsCommand(const std::string& expression) {
    return usualCommand(Client::Notmuch, {"--eval", expression});
}

// A value of "-compose": the program looks for quotes and commas first, then decodes what it found.
std::string composeField(std::string_view name, std::string_view text) {
    if (text.empty()) {
        return {};
    }
    std::string field = std::string(name) + "='";
    platform::appendPercentEncoded(
        platform::validUtf8(std::string(text)), platform::PercentKeep::Unreserved, field);
    return field + "',";
}

// URLs of files, whose list is split at commas and is not decoded before.
std::string composeAttachments(const std::vector<std::string>& files) {
    std::string list;
    for (const std::string& file : files) {
        std::string url = "file://";
        for (std::string_view rest = file; !rest.empty();) {
            const std::size_t slash = std::min(rest.find('/'), rest.size());
            platform::appendPercentEncoded(
                rest.substr(0, slash), platform::PercentKeep::Unreserved, url);
            url += slash < rest.size() ? "/" : "";
            rest.remove_prefix(std::min(slash + 1, rest.size()));
        }
        list.append(list.empty() ? "" : ",").append(url);
    }
    return list.empty() ? "" : "attachment='" + list + "',";
}

std::string joined(const std::vector<std::string>& addresses) {
    std::string list;
    for (const std::string& address : addresses) {
        list.append(list.empty() ? "" : ",").append(address);
    }
    return list;
}

std::string thunderbirdFields(const Draft& draft) {
    const bool isHtml = !draft.html.empty();
    std::string fields =
        composeField("to", joined(draft.to)) + composeField("cc", joined(draft.cc)) +
        composeField("bcc", joined(draft.bcc)) + composeField("subject", draft.subject) +
        composeField("format", isHtml ? "html" : "text") +
        composeField("body", isHtml ? draft.html : draft.text) + composeAttachments(draft.files);
    fields.pop_back();  // the last comma
    return fields;
}

// Options for the files, each of which follows its own.
Command withOption(const std::string& option, const std::vector<std::string>& files) {
    Command words;
    for (const std::string& file : files) {
        words.push_back(option);
        words.push_back(file);
    }
    return words;
}

struct Place {
    std::string_view name;
    const std::string* value;
};

// A word of a command with the home folder for "~/" at its start and the values of its places.
std::string filledWord(std::string_view rest, std::span<const Place> places) {
    const char* const home = rest.starts_with("~/") ? std::getenv("HOME") : nullptr;
    std::string word = home == nullptr ? "" : home;
    rest.remove_prefix(home == nullptr ? 0 : 1);
    while (!rest.empty()) {
        const auto place = std::find_if(places.begin(), places.end(), [rest](const Place& each) {
            return rest.starts_with(each.name);
        });
        const bool isPlace = place != places.end();
        word += isPlace ? *place->value : std::string(1, rest.front());
        rest.remove_prefix(isPlace ? place->name.size() : 1);
    }
    return word;
}

}  // namespace

std::optional<Client> clientNamed(std::string_view name) {
    return clientIn(kConfigured, name);
}

std::optional<Client> clientOfEntry(std::string_view identifier) {
    return clientIn(kEntries, identifier);
}

bool isPlainMessageId(std::string_view messageId) {
    constexpr std::size_t kLongest = 998;  // a line of a header
    constexpr std::string_view kNot = " \"'<>";
    return !messageId.empty() && messageId.size() <= kLongest && !messageId.starts_with('-') &&
           messageId.find_first_of(kNot) == std::string_view::npos &&
           platform::printableLine(messageId) == messageId;
}

// What may stand in a path stays as it is: some programs do not decode the rest.
std::string midUrl(std::string_view messageId) {
    std::string url = "mid:";
    platform::appendPercentEncoded(messageId, platform::PercentKeep::Path, url);
    return url;
}

std::optional<Command> showCommand(const ClientProgram& program, const ShownMessage& message) {
    if (program.client == Client::KMail) {
        return commandWith(program, {"--view", message.file});
    }
    if (!isPlainMessageId(message.messageId)) {
        return std::nullopt;
    }
    switch (program.client) {
        case Client::NeoMutt:
            return commandWith(program,
                               {"-f", message.folder, "-e", neoMuttKeys(message.messageId)});
        case Client::Notmuch:
            return emacsCommand("(progn (require 'notmuch) (notmuch-show " +
                                lispText("id:\"" + message.messageId + "\"") + "))");
        case Client::Mu4e:
            return emacsCommand("(progn (require 'mu4e) (mu4e-view-message-with-message-id " +
                                lispText(message.messageId) + "))");
        default:
            return commandWith(program, {midUrl(message.messageId)});
    }
}

Command openCommand(const ClientProgram& program, const std::string& target) {
    return commandWith(program, {target});
}

std::optional<Command> composeCommand(const ClientProgram& program, const Draft& draft) {
    if (program.client == Client::Thunderbird) {
        return commandWith(program, {"-compose", thunderbirdFields(draft)});
    }
    if (draft.files.empty()) {
        return openCommand(program, mailtoForDraft(draft, MailtoFiles::LeftOut));
    }
    const std::string url = mailtoForDraft(draft, MailtoFiles::LeftOut);
    switch (program.client) {
        case Client::Evolution:
            return commandWith(program, {mailtoForDraft(draft, MailtoFiles::Named)});
        case Client::KMail: {
            Command words = withOption("--attach", draft.files);
            words.push_back(url);
            return commandWith(program, words);
        }
        case Client::NeoMutt: {
            Command words = withOption("-a", draft.files);
            words.insert(words.end(), {"--", url});
            return commandWith(program, words);
        }
        default:
            return std::nullopt;
    }
}

std::optional<Command> configuredCommand(const std::string& line, const ShownMessage& message) {
    const std::array places{Place{"{file}", &message.file},
                            Place{"{folder}", &message.folder},
                            Place{"{messageid}", &message.messageId}};
    const auto words = platform::wordsOfCommand(line);
    const bool namesId = line.find(places.back().name) != std::string::npos;
    if (!words || (namesId && !isPlainMessageId(message.messageId))) {
        return std::nullopt;
    }
    Command command;
    for (const std::string& word : *words) {
        command.push_back(filledWord(word, places));
    }
    return command;
}

}  // namespace quillet::mailhost
