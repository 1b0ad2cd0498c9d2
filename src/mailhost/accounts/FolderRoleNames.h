#pragma once

#include <initializer_list>
#include <span>
#include <string_view>

#include "mailhost/accounts/FolderRoles.h"

namespace quillet::mailhost {

// The names of a role in many languages, in any case: as mail programs and servers create them, and
// as people translate them. "[Gmail]/" stands only before a name that means something else without.
struct RoleNames {
    FolderRole role;
    std::initializer_list<std::string_view> names;
};

std::span<const RoleNames> folderRoleNames();

}  // namespace quillet::mailhost
