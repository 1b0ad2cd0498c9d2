#include "model/ContainerPaths.h"

#include "platform/extension/Bundle.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet::ExtensionUtilities {

namespace FileManager = platform::FileManager;
using platform::Path::appendingPathComponent;

std::string GroupFolderName() {
    constexpr std::string_view kBetaPrefix = "it.tarno.quillet.beta";
    const std::optional<std::string> identifier = platform::Bundle::main().identifier();
    return identifier && identifier->starts_with(kBetaPrefix) ? "SharedDataBeta" : "SharedData";
}

std::optional<std::string> GroupPath() {
    return FileManager::containerPathForGroup(kGroupIdentifier);
}

std::optional<std::string> GroupDataPath() {
    const std::optional<std::string> container = GroupPath();
    if (!container) {
        return std::nullopt;
    }
    return appendingPathComponent(*container, GroupFolderName());
}

std::optional<std::vector<std::string>> directoryContent(const std::string& path) {
    std::vector<std::string> paths;
    if (!FileManager::folderExists(path)) {
        return paths;
    }
    const auto names = FileManager::contentsOfFolder(path);
    if (!names) {
        return std::nullopt;
    }
    for (const std::string& name : names.value()) {
        if (!name.starts_with('.')) {
            paths.push_back(appendingPathComponent(path, name));
        }
    }
    return paths;
}

}  // namespace quillet::ExtensionUtilities
