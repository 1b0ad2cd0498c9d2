#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/url/URL.h"

namespace quillet {

// A command of the widget, or a draft of another program, as the host application reads it from
// its URL.
struct HostCommand {
    std::string word;  // "open", "archive" …; what stands in its place if there is no such word
    std::string account;                 // mail address
    std::string identifier;              // "messageId"
    std::string folderStandardId;        // as it is written
    std::optional<platform::URL> draft;  // of compose, message and send: what carries it
    std::string problem;                 // why it cannot be followed; empty if it can

    // Whether it asks to show a message: open, reply and the drafts.
    bool shows() const;
};

// Reads "quillet://WORD?mail=…&messageid=…&folderstandardid=…". The message identifier is taken as
// it stands there, whatever it looks like; the mail address is decoded. Any text is accepted.
// `problem` is set when the URL is not a command. For drafts only the command word is read. Any
// thread.
HostCommand readHostCommand(std::string_view url);

}  // namespace quillet
