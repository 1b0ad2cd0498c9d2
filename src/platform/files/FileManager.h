#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/ByteBuffer.h"
#include "platform/base/Error.h"
#include "platform/base/Result.h"

// The file system, as bytes of paths. Any thread.
namespace quillet::platform::FileManager {

// Whether anything exists at the path, symbolic links followed.
bool fileExists(const std::string& path);
bool folderExists(const std::string& path);

// An error where a folder cannot be used: ENOENT for none, ENOTDIR for something else, EACCES for
// one that the user may not list or enter.
std::optional<Error> checkFolder(const std::string& path);

// Names (not paths) of a folder's entries in the system's order, without "." and "..". An error
// where the folder cannot be listed.
Result<std::vector<std::string>> contentsOfFolder(const std::string& path);

// Reads a whole regular file into `bytes`, whose storage is reused. An error of the domain "POSIX"
// where it cannot be read, is not a regular file (EISDIR for a folder, else EINVAL; a FIFO, device
// or socket is never waited for) or is longer than `maximumSize` bytes (EFBIG); `bytes` is then of
// no use. A file that grows or shrinks meanwhile is read up to where it then ends. Symbolic links
// are followed.
std::optional<Error> readFile(const std::string& path, ByteBuffer& bytes, std::size_t maximumSize);

// Writes a file whole or not at all: a new file beside it (its name begins with "."), synced,
// then renamed over it; removed again on an error. The mode of an existing file is kept; a new one
// gets 0666 less the process's file mode mask. A symbolic link is followed. What stands there and
// is no regular file stays as it is: an error (EISDIR for a folder, else EINVAL).
std::optional<Error> writeFileAtomically(const std::string& path, std::string_view bytes);

// Writes where a user says: a FIFO or a device that stands at the path is written
// into, as a shell would, and waited for; everything else goes by writeFileAtomically.
std::optional<Error> writeFile(const std::string& path, std::string_view bytes);

// Copies the contents of a regular file, symbolic links followed, to `destination`, where nothing
// may stand yet: whole or not at all. The kernel copies, and shares the blocks where the file
// system can; sizes and kinds are as for readFile. The copy's mode is 0666 less the process's file
// mode mask. A file that grows meanwhile is copied up to its old length; one that shrinks is an
// error.
std::optional<Error> copyFile(const std::string& source, const std::string& destination);

// Makes a folder and those above it, each that is new for the user alone (mode 0700); an existing
// folder is no error.
std::optional<Error> createFolder(const std::string& path);

// Removes what stands at the path, a folder with everything in it. Symbolic links are removed and
// never followed. An error where nothing stands there; what could be removed before another error
// is gone then.
std::optional<Error> removeItem(const std::string& path);

// Where the shared container of an application group lies, as an absolute path: QUILLET_CONTAINER
// when set (empty: no container; relative: seen from the working folder), else
// $XDG_DATA_HOME/group-containers/<group>, with ~/.local/share where XDG_DATA_HOME is unset, empty
// or relative. None where neither is known. The folder need not exist.
std::optional<std::string> containerPathForGroup(std::string_view group);

// A folder for the user's temporary files: "quillet-<uid>" below $TMPDIR, or below /tmp where
// TMPDIR is unset or relative. It is made with mode 0700 and refused unless it is a private folder
// (the user owns it, nobody else has permissions) and no symbolic link.
Result<std::string> temporaryFolder();

// A folder for per-user runtime files. It is $XDG_RUNTIME_DIR where that is an absolute path of a
// private folder. Otherwise (unset, relative, missing, not private) it is the temporaryFolder.
// Programs that share locks have to choose by this very rule.
Result<std::string> runtimeFolder();

}  // namespace quillet::platform::FileManager
