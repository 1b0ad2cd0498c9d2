#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/ExtensionAccount.h"
#include "model/ExtensionAddress.h"
#include "model/ExtensionGroup.h"

// The shared container and what it holds beside the messages. Nothing is cached: each call asks
// for the bundle identifier and the container anew. Any thread.
namespace quillet::ExtensionUtilities {

// The application group that the host application and the widget share.
inline constexpr std::string_view kGroupIdentifier = "Q7K2M9X4TB.quillet";

// Name of the data folder: "SharedDataBeta" for the beta line of bundles, else "SharedData".
std::string GroupFolderName();
// The shared container; none when the platform gives none. The folder need not exist.
std::optional<std::string> GroupPath();
// The data folder in it; none without a container.
std::optional<std::string> GroupDataPath();

// The accounts of Accounts.plist in file order, read under coordination; empty when the file is
// missing or holds no list. Blocks until the host's writers are done.
std::vector<std::shared_ptr<ExtensionAccount>> Accounts();

struct AddressBook {
    std::vector<std::shared_ptr<ExtensionAddress>> addresses;
    std::vector<std::shared_ptr<ExtensionGroup>> groups;
};

// The host's address book in file order, read under coordination; a list is empty when its file is
// missing or holds no list. Makes the folder "Contacts" where it is missing. `groups` is always
// empty. Blocks until the host's writers are done.
AddressBook AddressesAndGroups();

}  // namespace quillet::ExtensionUtilities

namespace quillet::RequestUtils {

// The path of a file in `folder` that does not exist yet: `name` itself, else with "_1", "_2" …
// before its extension. None when name or folder is none.
std::optional<std::string> GetGoodPath(const std::optional<std::string>& name,
                                       const std::optional<std::string>& folder);

}  // namespace quillet::RequestUtils
