#include "handoff/StagedFile.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "handoff/Staging.h"

namespace quillet {

namespace fs = std::filesystem;

std::optional<StagedFile> stagedFile(const std::string& dataFolder, const std::string& path) {
    if (!path.starts_with('/') || path.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    std::error_code failure;
    const fs::path root = fs::canonical(dataFolder, failure);
    if (failure) {
        return std::nullopt;
    }
    const fs::path canonical = fs::weakly_canonical(path, failure);
    const auto [end, item] =
        std::mismatch(root.begin(), root.end(), canonical.begin(), canonical.end());
    const bool isInside = !failure && end == root.end() && item != canonical.end() &&
                          std::next(item) != canonical.end() &&
                          ExtensionUtilities::namesStagingFolder(item->string());
    return isInside ? std::optional(StagedFile{(root / *item).string(), canonical.string()})
                    : std::nullopt;
}

}  // namespace quillet
