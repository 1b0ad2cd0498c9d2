#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/base/Error.h"
#include "platform/files/FileLock.h"

namespace quillet::platform {

// Coordinates reads and writes of shared items between processes: readers of an item run together,
// a writer runs alone. This is advisory: all programs have to take part.
//
// The lock of an item is a kernel lock (flock, shared for reading, exclusive for writing) on
//   <runtime folder>/quillet/<data folder>/<first path component below the data folder>.lock
// <data folder> is the folder's canonical path with symbolic links followed (if that fails, the
// absolute path as it is spelled). In it and in the component, "%" is written as "%25" and "/" as
// "%2F". The lock of the data folder itself is "%2E.lock". Instead of a name longer than 255 bytes,
// ".lock" included, stands "%h" with the 64-bit FNV-1a hash of the unescaped bytes in 16 lower-case
// hexadecimal digits. Folders are created with mode 0700, files with mode 01600 (the sticky bit
// keeps programs that clean up from removing them).
//
// So a reader of "Today" waits for a writer of anything inside it, and the reverse. Unrelated items
// never wait for each other, nothing is created in the container, the item need not exist, and the
// lock of a process that dies is free at once. The lock of an item outside the data folder is
// <runtime folder>/quillet/<canonical path>.lock.
//
// Any thread; waits until the lock is free or the program is to end (see LockWait.h). Threads of
// one process exclude each other like processes. An accessor must not coordinate the same item
// again.
class FileCoordinator {
public:
    using Accessor = std::function<void(const std::string& path)>;

    // The first-level entries of `dataFolder` are the items; none if there is no container.
    explicit FileCoordinator(std::optional<std::string> dataFolder);

    // Waits for the item, runs the accessor with the path on the calling thread and releases the
    // item, also if the accessor throws. On an error the accessor has not run: the path is missing,
    // there is no usable runtime folder (see FileManager::runtimeFolder), the lock file cannot be
    // created or is not a regular file, or the program is to end before the item is free.
    std::optional<Error> coordinateReading(const std::optional<std::string>& path,
                                           const Accessor& accessor) const;
    std::optional<Error> coordinateWriting(const std::optional<std::string>& path,
                                           const Accessor& accessor) const;
    // As above, but these do not wait: EWOULDBLOCK if the item is held elsewhere.
    std::optional<Error> coordinateReadingIfFree(const std::string& path,
                                                 const Accessor& accessor) const;
    std::optional<Error> coordinateWritingIfFree(const std::string& path,
                                                 const Accessor& accessor) const;

private:
    enum class Waiting { Allowed, Refused };

    std::optional<Error> coordinate(const std::optional<std::string>& path,
                                    FileLock::Access access,
                                    Waiting waiting,
                                    const Accessor& accessor) const;

    std::optional<std::string> dataFolder_;
};

}  // namespace quillet::platform
