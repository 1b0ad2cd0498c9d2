#pragma once

#include <memory>
#include <string>

#include "host/Draft.h"
#include "host/MailStore.h"
#include "model/HostCommand.h"

namespace quillet::host {

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
