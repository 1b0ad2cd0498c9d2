#pragma once

#include <string>
#include <string_view>
#include <vector>

// Copies what an extension shares into a staging folder of the container, where the host finds it.
// Any thread; failures are logged and leave out what failed.
//
// A staging folder lies in the data folder and is named after a service word that the caller
// chooses. Every change to it is made under the writer's lock on it. A word that is not a single
// plain path component, or that names what the host keeps there ("Today", "Accounts.plist",
// "Contacts"), changes nothing and is logged as a coordination error; so is a missing container.
namespace quillet::ExtensionUtilities {

// Whether a word names a staging folder. Emptying what the host keeps beside them would lose mail.
bool namesStagingFolder(std::string_view service);

// Empties the staging folder, or makes it. To be called once before a share.
void ShareInit(std::string_view service);

// Copies files into the staging folder under their own names, with "_1", "_2" … before the
// extension where a name is taken. Symbolic links are followed; folders and everything else that is
// not a regular file are errors. Returns the paths of the copies in the order of `paths`, without
// those that failed; a copy that fails leaves nothing behind.
std::vector<std::string> ShareFiles(std::string_view service,
                                    const std::vector<std::string>& paths);

// Writes blocks of bytes into the staging folder as "image.png", "image_1.png" … in the same way.
std::vector<std::string> ShareDatas(std::string_view service,
                                    const std::vector<std::string_view>& blocks);

}  // namespace quillet::ExtensionUtilities
