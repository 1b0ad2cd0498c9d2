#include "model/HostCommand.h"

#include <algorithm>
#include <array>
#include <variant>

#include "model/HostInterface.h"
#include "platform/base/Exception.h"
#include "util/RequestUtils.h"

namespace quillet {

namespace {

using namespace ExtensionUtilities;
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
    constexpr std::array kWords{commandOpen, commandReply, commandArchive, commandDelete};
    if (std::find(kWords.begin(), kWords.end(), command.word) == kWords.end()) {
        return "no command of this host";
    }
    return command.identifier.empty() ? "it names no message" : "";
}

bool isDraftWord(std::string_view word) {
    return word == commandCompose || word == commandMessage || word == commandSend;
}

}  // namespace

bool HostCommand::shows() const {
    return problem.empty() && (draft || word == commandOpen || word == commandReply);
}

HostCommand readHostCommand(std::string_view url) {
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
    command.identifier = takeMessageId(rest);
    try {
        const auto parameters = RequestUtils::URLQueryParameters(rest);
        command.account = textOf(parameters, "mail");
        command.folderStandardId = textOf(parameters, "folderstandardid");
        command.problem = problemOf(command);
    } catch (const platform::Exception& exception) {
        command.problem = exception.description();
    }
    return command;
}

}  // namespace quillet
