#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/ByteBuffer.h"
#include "platform/base/Error.h"
#include "platform/base/Result.h"

// The file system. Paths are bytes. Any thread.
namespace quillet::platform::FileManager {

// Whether anything is at the path; symbolic links are followed.
bool fileExists(const std::string& path);
bool folderExists(const std::string& path);

// An error if the folder cannot be used: ENOENT if it is missing, ENOTDIR if it is not a folder,
// EACCES if the user may not list or enter it.
std::optional<Error> checkFolder(const std::string& path);

// Names (not paths) of a folder's entries in the system's order, without "." and "..". An error if
// the folder cannot be listed.
Result<std::vector<std::string>> contentsOfFolder(const std::string& path);

// Reads a whole regular file into `bytes`, whose storage is reused. Symbolic links are followed. An
// error of the domain "POSIX" if the file cannot be read, is not a regular file (EISDIR for a
// folder, else EINVAL; a FIFO, device or socket is never waited for) or is longer than
// `maximumSize` bytes (EFBIG); the contents of `bytes` are undefined then. A file that grows or
// shrinks meanwhile is read to its new end.
std::optional<Error> readFile(const std::string& path, ByteBuffer& bytes, std::size_t maximumSize);

// Writes a file whole or not at all: writes a new file beside it (its name begins with "."), syncs
// it and renames it; removes it on an error. Keeps the mode of an existing file; a new one gets
// 0666 less the process's file mode mask. Symbolic links are followed. Anything but a regular file
// at the path stays and is an error (EISDIR for a folder, else EINVAL).
std::optional<Error> writeFileAtomically(const std::string& path, std::string_view bytes);

// Writes to a path that the user gave. Writes into a FIFO or device there as a shell would, and
// waits for it; otherwise as writeFileAtomically.
std::optional<Error> writeFile(const std::string& path, std::string_view bytes);

// Copies the contents of a regular file to `destination`, whole or not at all. Symbolic links to
// the source are followed. It is an error if anything is at `destination` (EEXIST) and if the
// source is not a regular file (as for readFile). The kernel copies, and shares blocks if the file
// system can. The copy's mode is 0666 less the process's file mode mask. Of a file that grows
// meanwhile the old length is copied; a file that shrinks is an error.
std::optional<Error> copyFile(const std::string& source, const std::string& destination);

// Creates a folder and the missing folders above it for the user alone (mode 0700). An existing
// folder is not an error.
std::optional<Error> createFolder(const std::string& path);

// Removes what is at the path, a folder with everything in it. Symbolic links are removed, never
// followed. It is an error if nothing is there. After another error a part may be removed.
std::optional<Error> removeItem(const std::string& path);

// The absolute path of an application group's shared container: QUILLET_CONTAINER if it is set
// (empty: no container; relative: below the working folder), else
// $XDG_DATA_HOME/group-containers/<group>, with ~/.local/share if XDG_DATA_HOME is unset, empty or
// relative. None if the home folder is needed and unknown. The folder need not exist.
std::optional<std::string> containerPathForGroup(std::string_view group);

// A folder for the user's temporary files: "quillet-<uid>" below $TMPDIR, or below /tmp if TMPDIR
// is unset or relative. Created with mode 0700. It is an error if it is a symbolic link or not
// private (owned by the user, no permissions for others).
Result<std::string> temporaryFolder();

// A folder for the user's runtime files: $XDG_RUNTIME_DIR if that is the absolute path of a private
// folder, else temporaryFolder(). All programs that share locks must use this rule.
Result<std::string> runtimeFolder();

}  // namespace quillet::platform::FileManager
