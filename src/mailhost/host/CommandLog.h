#pragma once

#include <iosfwd>
#include <string>

#include "mailhost/host/ContainerWriter.h"
#include "mailhost/host/MailHost.h"

#include "model/HostCommand.h"
#include "platform/desktop/ApplicationService.h"

namespace quillet::mailhost {

// Writes one JSON object a line for each command, each call without one, and each file of the
// container that changes; see docs/mail-host.md. Main thread only.
class CommandLog {
public:
    // Null: writes nothing.
    explicit CommandLog(std::ostream* out) : out_(out) {}

    void writeCommand(const platform::ApplicationCall& call,
                      const std::string& url,
                      const HostCommand& command,
                      const Outcome& outcome);
    // Of a message that a notice was to bring back.
    void writeUndone(const UndoList::Undone& undone);
    void writeCall(const platform::ApplicationCall& call);
    void writeChanges(const ContainerWriter::Changes& changes);

private:
    std::ostream* out_;
};

}  // namespace quillet::mailhost
