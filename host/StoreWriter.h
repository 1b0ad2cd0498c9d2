#pragma once

#include <optional>
#include <span>
#include <string>

#include "host/SampleStore.h"
#include "platform/base/Error.h"

namespace quillet::host {

// The data folder of a container for the running program's bundle identifier.
std::string dataFolder(const std::string& container);

struct StoreFailure {
    platform::Error error;
    bool isOfLock = false;  // otherwise the store could not be written
};

// Writes the files below a container's data folder, each one whole or not at all and under its
// coordination lock, so that a reader never sees half a file; waits for readers that hold the
// lock. Makes the folders that are missing, the container and the data folder for the user alone,
// and replaces files of the same name. Stops at the first error.
std::optional<StoreFailure> writeStore(const std::string& dataFolder,
                                       std::span<const StoreFile> files);

}  // namespace quillet::host
