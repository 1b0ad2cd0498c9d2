#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/base/Error.h"
#include "platform/files/FileLock.h"

namespace quillet::platform {

// Orders reads and writes of shared items between processes: readers of an item run together, a
// writer runs alone. It is advisory: both sides have to take part.
//
// The lock of an item is a kernel lock (flock, shared for reading, exclusive for writing) on
//   <runtime folder>/quillet/<data folder>/<first path component below the data folder>.lock
// where <data folder> is the folder's canonical path (symbolic links followed; where that fails,
// the absolute path as it is spelled) with "%" written as "%25" and "/" as "%2F"; the component is
// written in the same way. The data folder as an item of its own has the lock "%2E.lock". A name
// that would be longer than 255 bytes, ".lock" included, is written as "%h" and the 64-bit FNV-1a
// hash of the unescaped bytes in 16 lower-case hexadecimal digits. Folders are made with mode 0700,
// files with mode 01600 (the sticky bit keeps them from being swept away).
//
// So a reader of "Today" waits for a writer of anything inside it and the reverse, unrelated items
// never wait for each other, nothing is created in the container, the item need not exist, and
// the lock of a process that dies is free at once. An item outside the data folder is locked by
// its own canonical path, as <runtime folder>/quillet/<canonical path>.lock.
//
// Any thread; waits for the holder of the lock until it is free, or until the program is to end
// (see LockWait.h). Threads of one process exclude each other like processes do; an accessor must
// not coordinate the same item again.
class FileCoordinator {
public:
    using Accessor = std::function<void(const std::string& path)>;

    // `dataFolder`: the folder whose first-level entries are the items; none where there is no
    // container.
    explicit FileCoordinator(std::optional<std::string> dataFolder);

    // Waits for the item, runs the accessor on the calling thread with the path to use, then lets
    // the item go, also when the accessor throws. On an error the accessor has not run: the path
    // is none, there is no usable runtime folder (see FileManager::runtimeFolder), the lock file
    // cannot be made or is no regular file, or the program is to end before the item is free.
    std::optional<Error> coordinateReading(const std::optional<std::string>& path,
                                           const Accessor& accessor) const;
    std::optional<Error> coordinateWriting(const std::optional<std::string>& path,
                                           const Accessor& accessor) const;
    // The same for writing, without waiting: an error (EWOULDBLOCK) where somebody holds the item.
    std::optional<Error> coordinateWritingIfFree(const std::string& path,
                                                 const Accessor& accessor) const;

private:
    std::optional<Error> coordinate(const std::optional<std::string>& path,
                                    FileLock::Access access,
                                    const Accessor& accessor) const;

    std::optional<std::string> dataFolder_;
};

}  // namespace quillet::platform
