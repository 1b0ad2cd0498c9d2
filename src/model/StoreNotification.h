#pragma once

#include <string_view>

// What the host application posts to every process of the session when the store has changed.
namespace quillet::StoreNotification {

inline constexpr std::string_view kName = "k_today_widget_key";
inline constexpr std::string_view kObject = "k_today_widget_object";

}  // namespace quillet::StoreNotification
