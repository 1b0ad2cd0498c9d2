#pragma once

#include <string_view>

namespace quillet {

// The scheme of the URLs that host applications open: commands and drafts.
inline constexpr std::string_view kHostScheme = "quillet";

// What the host application posts to every process of the session when the store has changed.
inline constexpr std::string_view kStoreNotificationName = "k_today_widget_key";
inline constexpr std::string_view kStoreNotificationObject = "k_today_widget_object";

namespace ExtensionUtilities {

// Command words of the host application.
inline constexpr std::string_view commandOpen = "open";
inline constexpr std::string_view commandReply = "reply";
inline constexpr std::string_view commandArchive = "archive";
inline constexpr std::string_view commandDelete = "delete";
// Words that hosts know and the widget never sends.
inline constexpr std::string_view commandMessage = "message";
inline constexpr std::string_view commandCompose = "compose";
inline constexpr std::string_view commandSend = "send";

}  // namespace ExtensionUtilities

}  // namespace quillet
