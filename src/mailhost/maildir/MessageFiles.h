#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/base/Error.h"
#include "platform/base/Result.h"

// What reading, moves and their recovery do with the files of mail folders. Errors are of the
// domain "POSIX". Any thread.
namespace quillet::mailhost {

// The path of a message taken apart: FOLDER/cur/NAME, or "new" or "tmp" instead of "cur".
struct MessagePath {
    std::string folder;
    std::string part;
    std::string name;

    std::string partFolder() const { return folder + "/" + part; }
};

// None if `path` is not absolute or not the path of a message.
std::optional<MessagePath> parseMessagePath(const std::string& path);

// Whether both paths lead to one folder, for instance through a symbolic link.
bool isSameFolder(const std::string& one, const std::string& other);

// Whether a regular file, and no symbolic link to one, is at the path.
bool isRegularFile(const std::string& path);

// stableBase() of a file name with flags.
std::string stableBaseOfFile(std::string_view fileName);

// The path of the message with this stable base in "cur" or "new" of `folder`; none if it is not
// listed there. An error if "cur" cannot be listed.
platform::Result<std::optional<std::string>> findMessage(const std::string& folder,
                                                         std::string_view base);

// The path that the message at `path` has now, found by its stable base; empty if it is not listed.
std::string currentPath(const std::string& path);

// Removes the message, also if another program has renamed it since.
void removeMessage(const std::string& path);

// Gives the file a new path on its file system and never replaces anything. Returns 0 or the errno
// value; after an error nothing has changed.
int moveWithoutReplacing(const std::string& from, const std::string& to);

// Writes the entries of the folder to the disk. Some file systems cannot, which is not an error.
std::optional<platform::Error> syncFolder(const std::string& path);

// Renames the message at `path` such that it has the flags of the file name `flagged`, and returns
// its path then. It keeps its flags if that fails: flags matter less than the message.
std::string withFlagsOf(const std::string& path, std::string_view flagged);

}  // namespace quillet::mailhost
