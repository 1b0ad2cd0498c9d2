#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "model/ExtensionMessage.h"

namespace quillet::ExtensionUtilities {

// Command words of the host application.
inline constexpr std::string_view commandOpen = "open";
inline constexpr std::string_view commandReply = "reply";
inline constexpr std::string_view commandArchive = "archive";
inline constexpr std::string_view commandDelete = "delete";

// Asks the host application to do something with messages. Main thread.
bool LaunchCommandForMessages(const std::vector<std::shared_ptr<ExtensionMessage>>& messages,
                              std::string_view commandName,
                              bool background);

}  // namespace quillet::ExtensionUtilities
