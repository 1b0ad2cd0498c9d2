#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/ExtensionMessage.h"
#include "model/HostInterface.h"
#include "platform/url/URL.h"

// Commands to the host application: URLs of its scheme that it is asked to open. Main thread only.
// These operations show and log nothing when the host cannot be asked. The workspace logs a line
// when no application takes a request that was on its way. See docs/commands.md.
namespace quillet::ExtensionUtilities {

// Posted in the process for each message before the host is asked to act on it; the object is a
// CalledAction.
inline constexpr std::string_view kActionCalledNotification = "ACTION_CALLED_EXTENSION";

struct CalledAction {
    std::shared_ptr<ExtensionMessage> message;
    std::string command;
};

// Returns the identifier of the host application that serves a widget of this identifier.
std::string_view targetBundleIdentifier(const std::optional<std::string>& ownIdentifier);

// Asks the host application to carry out a command on messages, in the background or coming to the
// front. Each message is announced in the process first, then the host is asked once for all. A
// message whose identifier makes no valid URL is left out silently. Returns true once the request
// is on its way, false when no URL is left or no host is found.
bool LaunchCommandForMessages(const std::vector<std::shared_ptr<ExtensionMessage>>& messages,
                              std::string_view commandName,
                              bool background);

// Hands URLs to the host application. Returns false when there are none or no host is found.
bool LaunchCommands(std::span<const platform::URL> commands, bool background);

}  // namespace quillet::ExtensionUtilities
