#pragma once

#include <optional>
#include <span>
#include <string>

#include "bench/store/PropertyListWriter.h"
#include "platform/base/Error.h"

namespace quillet::test {

// The data folder of a container for the running program's bundle identifier.
std::string dataFolder(const std::string& container);

// One file of the data folder.
struct StoreFile {
    std::string path;  // below the data folder
    Value root;
    PropertyListFormat format;
};

// Writes the files below a container's data folder, each one whole or not at all and under its
// coordination lock, so that a reader never sees half a file; waits for readers that hold the
// lock. Makes the folders that are missing, the container and the data folder for the user alone,
// and replaces files of the same name. Stops at the first error.
std::optional<platform::Error> writeStore(const std::string& dataFolder,
                                          std::span<const StoreFile> files);

}  // namespace quillet::test
