#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mailhost/clients/Draft.h"

#include "platform/desktop/Applications.h"

// How the mail programs that the host knows are asked for one message, a reply or a draft. Texts of
// messages and drafts are a stranger's, so each stands escaped for every reader on its way. Pure
// functions for any thread. A command is a list of words: no shell reads it.
namespace quillet::mailhost {

using Command = std::vector<std::string>;

enum class Client { Thunderbird, Evolution, KMail, NeoMutt, Notmuch, Mu4e };

// A program to run: as its desktop entry says, or by its usual name.
struct ClientProgram {
    Client client = Client::Thunderbird;
    std::optional<platform::Application> application;
};

// The message that a program is to show.
struct ShownMessage {
    std::string file;       // paths
    std::string folder;     // the mail folder, which has "cur"
    std::string messageId;  // without brackets; empty: none
};

// The program of a configured word ("thunderbird") or of a desktop entry ("org.kde.kmail2").
std::optional<Client> clientNamed(std::string_view name);
std::optional<Client> clientOfEntry(std::string_view identifier);

// Whether a Message-ID may be handed to other programs: it has neither control characters, blanks,
// quotes nor angle brackets, and does not look like an option. Others are shown by their files.
bool isPlainMessageId(std::string_view messageId);

// "mid:ID", for a plain Message-ID.
std::string midUrl(std::string_view messageId);

// None where the program finds messages by their Message-ID, and this one is not plain.
std::optional<Command> showCommand(const ClientProgram& program, const ShownMessage& message);
// A program with what it opens: a "mailto:" URL, by which it begins a message, or a file.
Command openCommand(const ClientProgram& program, const std::string& target);
// None where the program has no way to take files, and the draft has some.
std::optional<Command> composeCommand(const ClientProgram& program, const Draft& draft);

// The user's own command line with the message in place of {file}, {folder} and {messageid}, and
// the home folder in place of "~" in front of "/". None where it names a Message-ID that is not
// plain.
std::optional<Command> configuredCommand(const std::string& line, const ShownMessage& message);

}  // namespace quillet::mailhost
