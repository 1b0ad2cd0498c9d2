#include "model/ExtensionUtilities.h"
#include "platform/base/TextFormat.h"
#include "platform/extension/Bundle.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet {

namespace Path = platform::Path;

namespace ExtensionUtilities {

std::string GroupFolderName() {
    constexpr std::string_view kBetaPrefix = "it.tarno.quillet.beta";
    const std::optional<std::string> identifier = platform::Bundle::main().identifier();
    return identifier && identifier->starts_with(kBetaPrefix) ? "SharedDataBeta" : "SharedData";
}

std::optional<std::string> GroupPath() {
    return platform::FileManager::containerPathForGroup(kGroupIdentifier);
}

std::optional<std::string> GroupDataPath() {
    const std::optional<std::string> container = GroupPath();
    if (!container) {
        return std::nullopt;
    }
    return Path::appendingPathComponent(*container, GroupFolderName());
}

}  // namespace ExtensionUtilities

namespace RequestUtils {

std::optional<std::string> GetGoodPath(const std::optional<std::string>& name,
                                       const std::optional<std::string>& folder) {
    if (!name || !folder) {
        return std::nullopt;
    }
    const std::string base = Path::deletingPathExtension(*name);
    const std::string extension = Path::pathExtension(*name);
    std::string candidate = base;
    for (unsigned long counter = 1;; ++counter) {
        std::string path = Path::appendingPathComponent(*folder, candidate);
        if (!extension.empty()) {
            path = Path::appendingPathExtension(path, extension);
        }
        if (!platform::FileManager::fileExists(path)) {
            return path;
        }
        candidate = base + platform::formatText("_%lu", {std::to_string(counter)});
    }
}

}  // namespace RequestUtils

}  // namespace quillet
