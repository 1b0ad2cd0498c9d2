#include "host/StoreWriter.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>

#include "model/ExtensionUtilities.h"
#include "platform/foundation/FileCoordinator.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/Path.h"

namespace quillet::host {

namespace FileManager = platform::FileManager;
namespace Path = platform::Path;

namespace {

// Makes a folder that only the user can enter, and those above it. One that exists keeps its mode.
std::optional<platform::Error> createPrivateFolder(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash != std::string::npos && slash > 0) {
        if (auto error = FileManager::createFolder(path.substr(0, slash))) {
            return error;
        }
    }
    if (::mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
        return platform::posixError(errno, path);
    }
    return std::nullopt;
}

}  // namespace

std::string dataFolder(const std::string& container) {
    return Path::appendingPathComponent(container, ExtensionUtilities::GroupFolderName());
}

std::optional<StoreFailure> writeStore(const std::string& dataFolder,
                                       std::span<const StoreFile> files) {
    const std::string container =
        dataFolder.substr(0, std::max<std::size_t>(dataFolder.rfind('/'), 1));
    for (const std::string& folder : {container, dataFolder}) {
        if (const auto error = createPrivateFolder(folder)) {
            return StoreFailure{*error};
        }
    }
    const platform::FileCoordinator coordinator(dataFolder);
    for (const StoreFile& file : files) {
        const std::string path = Path::appendingPathComponent(dataFolder, file.path);
        const std::string bytes = writePropertyList(file.root, file.format);
        auto failure = FileManager::createFolder(path.substr(0, path.rfind('/')));
        if (!failure) {
            const auto error = coordinator.coordinateWriting(path, [&](const std::string& target) {
                failure = FileManager::writeFileAtomically(target, bytes);
            });
            if (error) {
                return StoreFailure{*error, true};
            }
        }
        if (failure) {
            return StoreFailure{*failure};
        }
    }
    return std::nullopt;
}

}  // namespace quillet::host
