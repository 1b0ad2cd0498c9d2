#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/Draft.h"
#include "host/MailStore.h"

namespace quillet::host {

// A command of the widget, or a draft of another program, read from its URL.
struct HostCommand {
    std::string word;  // "open", "archive" …; what stands in its place where there is no such word
    MessageKey message;
    std::string folderStandardId;        // as it is written
    std::optional<platform::URL> draft;  // of compose, message and send: what carries it
    std::string problem;                 // why it cannot be followed; empty where it can

    // Whether it asks to show a message: open, reply and the drafts.
    bool shows() const;
};

// Reads "quillet://WORD?mail=…&messageid=…&folderstandardid=…". The message identifier is taken as
// it stands there, whatever it looks like; the mail address is decoded. Any text is accepted and
// never does harm: what is no command has a problem. Of a draft only the word is read. Any thread.
HostCommand readCommand(std::string_view url);

// What came of a command, or of a call without one (Activated).
struct Outcome {
    enum class Kind { Ignored, Failed, NotFound, Removed, Found, Received, Activated };

    Kind kind = Kind::Ignored;
    std::string reason;                         // of Ignored and Failed
    std::size_t copies = 0;                     // of Removed
    std::shared_ptr<ExtensionMessage> message;  // of Found
    std::shared_ptr<const Draft> draft;         // of Received
};

// Carries the command out on a container: archive and delete take the message away, the others
// look it up to be shown, and a draft is read with its files. Waits for locks without a limit. Any
// thread.
Outcome carryOut(const HostCommand& command, const std::string& dataFolder);

}  // namespace quillet::host
