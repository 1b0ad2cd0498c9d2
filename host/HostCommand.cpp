#include "host/HostCommand.h"

#include "platform/base/Exception.h"
#include "platform/url/URL.h"

namespace quillet::host {

namespace {

using platform::URL;

Outcome failed(const platform::Error& error) {
    Outcome outcome;
    outcome.kind = Outcome::Kind::Failed;
    outcome.reason = error.description();
    return outcome;
}

Outcome remove(const MessageKey& message, const std::string& dataFolder) {
    const auto copies = removeMessage(dataFolder, message);
    if (!copies) {
        return failed(copies.error());
    }
    Outcome outcome;
    outcome.kind = copies.value() > 0 ? Outcome::Kind::Removed : Outcome::Kind::NotFound;
    outcome.copies = copies.value();
    return outcome;
}

Outcome find(const MessageKey& message, const std::string& dataFolder) {
    const auto found = findMessage(dataFolder, message);
    if (!found) {
        return failed(found.error());
    }
    Outcome outcome;
    outcome.kind = found.value() ? Outcome::Kind::Found : Outcome::Kind::NotFound;
    outcome.message = found.value();
    return outcome;
}

Outcome receive(const URL& draft, const std::string& dataFolder) {
    Outcome outcome;
    try {
        outcome.draft = std::make_shared<const Draft>(receiveDraft(draft, dataFolder));
        outcome.kind = Outcome::Kind::Received;
    } catch (const platform::Exception& exception) {
        outcome.reason = exception.description();
    }
    return outcome;
}

}  // namespace

Outcome carryOut(const HostCommand& command, const std::string& dataFolder) {
    if (!command.problem.empty()) {
        Outcome outcome;
        outcome.reason = command.problem;
        return outcome;
    }
    if (command.draft) {
        return receive(*command.draft, dataFolder);
    }
    const MessageKey message{command.account, command.identifier};
    return command.shows() ? find(message, dataFolder) : remove(message, dataFolder);
}

}  // namespace quillet::host
