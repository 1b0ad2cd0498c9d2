#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/ExtensionMessage.h"
#include "platform/url/URL.h"

// Commands to the host application: URLs of its scheme that it is asked to open. Main thread only.
// Nothing is shown when the host cannot be asked, and these operations log nothing. The workspace
// logs a line for a request that was on its way and that no application takes in the end. See
// docs/commands.md.
namespace quillet::ExtensionUtilities {

// Command words of the host application.
inline constexpr std::string_view commandOpen = "open";
inline constexpr std::string_view commandReply = "reply";
inline constexpr std::string_view commandArchive = "archive";
inline constexpr std::string_view commandDelete = "delete";
// Words that the host knows and the widget never sends.
inline constexpr std::string_view commandMessage = "message";
inline constexpr std::string_view commandCompose = "compose";
inline constexpr std::string_view commandSend = "send";

// Posted in the process, with a CalledAction as its object, for each message that the host is
// about to be asked to act on.
inline constexpr std::string_view kActionCalledNotification = "ACTION_CALLED_EXTENSION";

struct CalledAction {
    std::shared_ptr<ExtensionMessage> message;
    std::string command;
};

// The identifier of the host application that belongs to a widget of this identifier.
std::string_view targetBundleIdentifier(const std::optional<std::string>& ownIdentifier);

// Asks the host application to carry out a command on messages: in the background, or coming to
// the front. Every message is announced in the process before the host is asked for all at once. A
// message whose identifier makes no valid URL is left out silently. True once the request is on
// its way; false where no URL is left or no host is found.
bool LaunchCommandForMessages(const std::vector<std::shared_ptr<ExtensionMessage>>& messages,
                              std::string_view commandName,
                              bool background);

// Hands URLs to the host application. False for none of them, or where no host is found.
bool LaunchCommands(std::span<const platform::URL> commands, bool background);

}  // namespace quillet::ExtensionUtilities
