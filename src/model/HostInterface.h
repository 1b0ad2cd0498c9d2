#pragma once

#include <string_view>

namespace quillet {

// The scheme of the URLs that host applications open: commands and drafts.
inline constexpr std::string_view kHostScheme = "quillet";

// What the host application posts to every process of the session when the store has changed.
inline constexpr std::string_view kStoreNotificationName = "k_today_widget_key";
inline constexpr std::string_view kStoreNotificationObject = "k_today_widget_object";

}  // namespace quillet
