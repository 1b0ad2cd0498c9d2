#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/foundation/Error.h"

namespace quillet::platform {

// Orders reads and writes of shared items between processes: readers of an item run together, a
// writer runs alone. It is advisory: both sides have to take part.
//
// The lock of an item is a kernel lock (flock) on
//   <runtime folder>/quillet/<data folder>/<first path component below the data folder>.lock
// where <data folder> is its canonical path with "%" and "/" percent-encoded. So a reader of "Today" waits for
// a writer of anything inside it and the reverse, unrelated items never wait for each other,
// nothing is created in the container, the item need not exist, and the lock of a process that
// dies is free at once. An item outside the data folder is locked by its own canonical path.
//
// Any thread; waits without a limit for the holder of the lock. An accessor must not coordinate
// the same item again.
class FileCoordinator {
public:
    using Accessor = std::function<void(const std::string& path)>;

    // `dataFolder`: the folder whose first-level entries are the items; none where there is no
    // container.
    explicit FileCoordinator(std::optional<std::string> dataFolder);

    // Waits for the item, runs the accessor on the calling thread with the path to use, then lets
    // the item go, also when the accessor throws. On an error the accessor has not run; a path
    // that is none is such an error.
    std::optional<Error> coordinateReading(const std::optional<std::string>& path,
                                           const Accessor& accessor) const;
    std::optional<Error> coordinateWriting(const std::optional<std::string>& path,
                                           const Accessor& accessor) const;

private:
    enum class Access { Shared, Exclusive };

    std::optional<Error> coordinate(const std::optional<std::string>& path,
                                    Access access,
                                    const Accessor& accessor) const;

    std::optional<std::string> dataFolder_;
};

}  // namespace quillet::platform
