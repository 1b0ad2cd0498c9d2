#include "host/HostCommand.h"

#include <algorithm>
#include <array>
#include <variant>

#include "model/HostInterface.h"
#include "platform/base/Exception.h"
#include "platform/url/URL.h"
#include "util/RequestUtils.h"
#include "widget/HostCommands.h"

namespace quillet::host {

namespace {

namespace Widget = ExtensionUtilities;
using platform::URL;

constexpr std::string_view kMessageId = "&messageid=";
constexpr std::string_view kFolder = "&folderstandardid=";

// Takes the message identifier out of the URL: it stands there unencoded, so that everything up to
// the last key belongs to it, "&", "#" and "%" included.
std::string takeMessageId(std::string& url) {
    const std::size_t key = url.find(kMessageId);
    const std::size_t end = url.rfind(kFolder);
    if (key == std::string::npos || end == std::string::npos || end < key + kMessageId.size()) {
        return {};
    }
    const std::size_t start = key + kMessageId.size();
    std::string identifier = url.substr(start, end - start);
    url.erase(key, end - key);
    return identifier;
}

std::string textOf(const ParameterMap& parameters, std::string_view key) {
    const auto* value = parameters.find(key);
    const auto* text = value == nullptr ? nullptr : std::get_if<std::string>(value);
    return text == nullptr ? std::string() : *text;
}

// Why a command cannot be followed; empty where it can.
std::string problemOf(const HostCommand& command) {
    constexpr std::array kWords{
        Widget::commandOpen, Widget::commandReply, Widget::commandArchive, Widget::commandDelete};
    if (std::find(kWords.begin(), kWords.end(), command.word) == kWords.end()) {
        return "no command of this host";
    }
    return command.message.identifier.empty() ? "it names no message" : "";
}

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

bool isDraftWord(std::string_view word) {
    return word == Widget::commandCompose || word == Widget::commandMessage ||
           word == Widget::commandSend;
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

bool HostCommand::shows() const {
    return problem.empty() &&
           (draft || word == Widget::commandOpen || word == Widget::commandReply);
}

HostCommand readCommand(std::string_view url) {
    HostCommand command;
    const auto valid = URL::URLWithString(url);
    if (!valid) {
        command.problem = "no valid URL";
        return command;
    }
    if (valid->scheme() != kHostScheme) {
        command.problem = "another scheme";
        return command;
    }
    command.word = valid->host();
    if (isDraftWord(command.word)) {
        command.draft = valid;
        return command;
    }
    std::string rest(url);
    command.message.identifier = takeMessageId(rest);
    try {
        const auto parameters = RequestUtils::URLQueryParameters(rest);
        command.message.account = textOf(parameters, "mail");
        command.folderStandardId = textOf(parameters, "folderstandardid");
        command.problem = problemOf(command);
    } catch (const platform::Exception& exception) {
        command.problem = exception.description();
    }
    return command;
}

Outcome carryOut(const HostCommand& command, const std::string& dataFolder) {
    if (!command.problem.empty()) {
        Outcome outcome;
        outcome.reason = command.problem;
        return outcome;
    }
    if (command.draft) {
        return receive(*command.draft, dataFolder);
    }
    return command.shows() ? find(command.message, dataFolder)
                           : remove(command.message, dataFolder);
}

}  // namespace quillet::host
