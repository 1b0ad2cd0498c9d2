#pragma once

#include <memory>
#include <vector>

#include "model/ExtensionAccount.h"

namespace quillet::ExtensionUtilities {

// The accounts of Accounts.plist in file order, read under coordination; empty when the file is
// missing or holds no list. Blocks until the host's writers are done. Any thread.
std::vector<std::shared_ptr<ExtensionAccount>> Accounts();

}  // namespace quillet::ExtensionUtilities
