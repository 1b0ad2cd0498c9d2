#pragma once

#include <string>
#include <string_view>

namespace quillet::mailhost {

enum class FolderRole { None, Inbox, Archive, AllMail, Trash, Drafts, Junk, Sent, ToDo, Memo };

// What a folder is for, by its name.
struct NamedRole {
    FolderRole role = FolderRole::None;
    unsigned year = 0;  // of an archive for one year, as "Archive/2026"
};

// The role of a decoded name ("[Gmail]/Trash") in the languages of the common mail programs,
// without the prefixes of servers.
NamedRole roleOfFolder(std::string_view name);

// A name in a form that is equal for names that differ in case or in how letters are composed.
std::string foldedName(std::string_view name);

}  // namespace quillet::mailhost
