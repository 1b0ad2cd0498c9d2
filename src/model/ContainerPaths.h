#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Where the shared container lies and what its folders hold. Nothing is cached: each call asks for
// the bundle identifier and the container again. Any thread.
namespace quillet::ExtensionUtilities {

// The application group that the host application and the widget share.
inline constexpr std::string_view kGroupIdentifier = "Q7K2M9X4TB.quillet";

// What the data folder holds, beside staging folders.
inline constexpr std::string_view kTodayFolder = "Today";
inline constexpr std::string_view kAccountsFile = "Accounts.plist";
inline constexpr std::string_view kContactsFolder = "Contacts";

// Name of the data folder: "SharedDataBeta" for the beta line of bundles, else "SharedData".
std::string GroupFolderName();
// The shared container; none when the platform has none. The folder may be missing.
std::optional<std::string> GroupPath();
// The data folder in the container; none without a container.
std::optional<std::string> GroupDataPath();

// The full paths of a folder's visible entries in the system's order. Empty when the folder is
// missing, none when it cannot be listed.
std::optional<std::vector<std::string>> directoryContent(const std::string& path);

}  // namespace quillet::ExtensionUtilities
