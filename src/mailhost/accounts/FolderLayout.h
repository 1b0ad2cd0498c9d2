#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "mailhost/accounts/Configuration.h"

// Where a layout puts the folders of a Maildir. mailFolders() of AccountFolders.h lists them.
namespace quillet::mailhost {

struct FolderEntry {
    std::string name;
    bool isLink = false;
};

// The folders in a folder of the file system, links to folders too, by name; at most 10,000. Empty
// if it cannot be listed.
std::vector<FolderEntry> foldersIn(const std::string& path);

// Whether a folder of messages is at the path: it has "cur". Symbolic links are followed.
bool isMailFolder(const std::string& path);

// The layout that the folders look like; never Layout::Auto.
Layout detectLayout(const std::string& maildir);

// Where the layout, not Auto, puts the folder "a/b". Nothing is decoded or encoded.
std::string folderPath(const std::string& maildir, std::string_view name, Layout layout);

// The name of a folder, or of a part of its path, for people: decoded if it is in modified UTF-7,
// else as it stands, as valid UTF-8.
std::string readableName(std::string_view nameOnDisk);

// Whether ".." is among the components of a name.
bool hasParentComponent(std::string_view name);

}  // namespace quillet::mailhost
