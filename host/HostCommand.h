#pragma once

#include <string>
#include <string_view>

#include "host/MailStore.h"

namespace quillet::host {

// A command of the widget, read from its URL.
struct HostCommand {
    std::string word;  // "open", "archive" …; what stands in its place where there is no such word
    MessageKey message;
    std::string folderStandardId;  // as it is written
    std::string problem;           // why it cannot be followed; empty where it can

    // Whether it asks to show the message: open and reply.
    bool shows() const;
};

// Reads "quillet://WORD?mail=…&messageid=…&folderstandardid=…". The message identifier is taken as
// it stands there, whatever it looks like; the mail address is decoded. Any text is accepted and
// never does harm: what is no command has a problem. Any thread.
HostCommand readCommand(std::string_view url);

// What came of a command, or of a call without one (Activated).
struct Outcome {
    enum class Kind { Ignored, Failed, NotFound, Removed, Found, Activated };

    Kind kind = Kind::Ignored;
    std::string reason;                         // of Ignored and Failed
    std::size_t copies = 0;                     // of Removed
    std::shared_ptr<ExtensionMessage> message;  // of Found
};

// Carries the command out on a container: archive and delete take the message away, the others
// look it up to be shown. Waits for the store's lock without a limit. Any thread.
Outcome carryOut(const HostCommand& command, const std::string& dataFolder);

}  // namespace quillet::host
