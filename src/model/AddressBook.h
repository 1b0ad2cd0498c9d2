#pragma once

#include <memory>
#include <vector>

#include "model/ExtensionAddress.h"
#include "model/ExtensionGroup.h"

namespace quillet::ExtensionUtilities {

struct AddressBook {
    std::vector<std::shared_ptr<ExtensionAddress>> addresses;
    std::vector<std::shared_ptr<ExtensionGroup>> groups;
};

// The host's address book in file order, read under coordination; a list is empty when its file is
// missing or holds no list. Makes the folder "Contacts" when it is missing. `groups` is always
// empty. Blocks until the host's writers are done. Any thread.
AddressBook AddressesAndGroups();

}  // namespace quillet::ExtensionUtilities
