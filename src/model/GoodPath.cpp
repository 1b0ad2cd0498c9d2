#include "model/GoodPath.h"

#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet::RequestUtils {

namespace Path = platform::Path;

std::optional<std::string> GetGoodPath(const std::optional<std::string>& name,
                                       const std::optional<std::string>& folder) {
    if (!name || !folder) {
        return std::nullopt;
    }
    const std::string base = Path::deletingPathExtension(*name);
    const std::string extension = Path::pathExtension(*name);
    std::string candidate = base;
    for (std::size_t counter = 1;; ++counter) {
        std::string path = Path::appendingPathComponent(*folder, candidate);
        if (!extension.empty()) {
            path = Path::appendingPathExtension(path, extension);
        }
        if (!platform::FileManager::fileExists(path)) {
            return path;
        }
        candidate = base + "_" + std::to_string(counter);
    }
}

}  // namespace quillet::RequestUtils
