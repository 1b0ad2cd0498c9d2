#include "bench/store/StoreWriter.h"

#include <algorithm>

#include "model/ContainerPaths.h"
#include "platform/files/FileCoordinator.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet::test {

namespace FileManager = platform::FileManager;
namespace Path = platform::Path;

std::string dataFolder(const std::string& container) {
    return Path::appendingPathComponent(container, ExtensionUtilities::GroupFolderName());
}

std::optional<platform::Error> writeStore(const std::string& dataFolder,
                                          std::span<const StoreFile> files) {
    const std::string container =
        dataFolder.substr(0, std::max<std::size_t>(dataFolder.rfind('/'), 1));
    for (const std::string& folder : {container, dataFolder}) {
        if (auto error = FileManager::createFolder(folder)) {
            return error;
        }
    }
    const platform::FileCoordinator coordinator(dataFolder);
    for (const StoreFile& file : files) {
        const std::string path = Path::appendingPathComponent(dataFolder, file.path);
        const std::string bytes = writePropertyList(file.root, file.format);
        auto failure = FileManager::createFolder(path.substr(0, path.rfind('/')));
        if (!failure) {
            auto error = coordinator.coordinateWriting(path, [&](const std::string& target) {
                failure = FileManager::writeFileAtomically(target, bytes);
            });
            if (error) {
                return error;
            }
        }
        if (failure) {
            return failure;
        }
    }
    return std::nullopt;
}

}  // namespace quillet::test
