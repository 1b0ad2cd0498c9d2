#include "share/StagingWord.h"

#include <charconv>
#include <optional>
#include <string_view>
#include <unistd.h>

#include "model/ExtensionUtilities.h"
#include "platform/foundation/FileCoordinator.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/Path.h"

namespace quillet {

namespace FileManager = platform::FileManager;
namespace Path = platform::Path;

namespace {

using Seconds = std::chrono::seconds;

// "Share-SECONDS-PROCESS", the seconds since 1970 at which the share began.
constexpr std::string_view kPrefix = "Share-";
constexpr Seconds kAge = std::chrono::hours(24);

std::optional<Seconds> beginOf(std::string_view name) {
    if (!name.starts_with(kPrefix)) {
        return std::nullopt;
    }
    name.remove_prefix(kPrefix.size());
    Seconds::rep seconds = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), seconds);
    if (error != std::errc() || end == name.data() + name.size() || *end != '-') {
        return std::nullopt;
    }
    return Seconds(seconds);
}

void removeOldFolders(const std::string& dataFolder, Seconds now) {
    const auto names = FileManager::contentsOfFolder(dataFolder);
    if (!names) {
        return;
    }
    for (const std::string& name : names.value()) {
        if (const auto begin = beginOf(name); begin && *begin < now - kAge) {
            // One that cannot be removed now is tried again at the next share.
            (void)platform::FileCoordinator(dataFolder)
                .coordinateWriting(
                    Path::appendingPathComponent(dataFolder, name),
                    [](const std::string& folder) { (void)FileManager::removeItem(folder); });
        }
    }
}

}  // namespace

std::string newStagingWord(std::chrono::system_clock::time_point now) {
    const auto seconds = std::chrono::duration_cast<Seconds>(now.time_since_epoch());
    std::string word =
        std::string(kPrefix) + std::to_string(seconds.count()) + "-" + std::to_string(::getpid());
    if (const auto dataFolder = ExtensionUtilities::GroupDataPath()) {
        removeOldFolders(*dataFolder, seconds);
        // Made now, so that emptying it finds it; where that fails, emptying it says so.
        (void)FileManager::createFolder(Path::appendingPathComponent(*dataFolder, word));
    }
    return word;
}

}  // namespace quillet
