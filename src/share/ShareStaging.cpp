#include "share/ShareStaging.h"

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>
#include <sys/xattr.h>
#include <unistd.h>
#include <utility>

#include "handoff/Staging.h"
#include "handoff/StagingFolder.h"
#include "model/ContainerPaths.h"
#include "platform/files/FileCoordinator.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet {

namespace FileManager = platform::FileManager;
using platform::FileCoordinator;

namespace {

using Seconds = std::chrono::seconds;

constexpr std::string_view kPrefix = "Share-";
constexpr Seconds kAge = std::chrono::hours(24);
// Marks the folders that are made here, since a user may choose a word of the same form. If the
// file system has no attributes, folders are never removed.
constexpr const char* kMark = "user.quillet.share";

// "Share-SECONDS-PROCESS", where SECONDS since 1970 is when the share began.
std::string ownWord(std::uint64_t seconds, std::uint64_t process) {
    return std::string(kPrefix) + std::to_string(seconds) + "-" + std::to_string(process);
}

// When the share of such a word began; none for other words.
std::optional<Seconds> beginOf(const std::string& word) {
    const std::size_t start = kPrefix.size();
    const std::size_t hyphen = word.find('-', start);
    if (hyphen == std::string::npos) {
        return std::nullopt;
    }
    std::uint64_t seconds = 0;
    std::uint64_t process = 0;
    std::from_chars(word.data() + start, word.data() + hyphen, seconds);
    std::from_chars(word.data() + hyphen + 1, word.data() + word.size(), process);
    return word == ownWord(seconds, process)
               ? std::optional(Seconds(static_cast<Seconds::rep>(seconds)))
               : std::nullopt;
}

bool isMarked(const std::string& folder) {
    return ::lgetxattr(folder.c_str(), kMark, nullptr, 0) >= 0;
}

void removeIfMarked(const std::string& folder) {
    if (isMarked(folder)) {
        (void)FileManager::removeItem(folder);
    }
}

// The next share tries again what cannot be removed now.
void removeOldFolders(const std::string& dataFolder, Seconds now) {
    const auto names = FileManager::contentsOfFolder(dataFolder);
    if (!names) {
        return;
    }
    for (const std::string& name : names.value()) {
        const std::string folder = platform::Path::appendingPathComponent(dataFolder, name);
        // Checked before the lock, too, since locking leaves a file.
        if (const auto begin = beginOf(name); begin && *begin < now - kAge && isMarked(folder)) {
            (void)FileCoordinator(dataFolder).coordinateWritingIfFree(folder, removeIfMarked);
        }
    }
}

}  // namespace

ShareStaging::ShareStaging(std::string service) : service_(std::move(service)) {
    if (const auto folder = stagingFolder(service_)) {
        folder_ = folder.value();
        // ShareInit expects the folder. If it cannot be made, ShareInit logs that.
        (void)FileManager::createFolder(folder_);
    }
    ExtensionUtilities::ShareInit(service_);
}

ShareStaging ShareStaging::inFolderOf(std::string service) {
    return ShareStaging(std::move(service));
}

ShareStaging ShareStaging::inOwnFolder(std::chrono::system_clock::time_point now) {
    const auto seconds = std::chrono::duration_cast<Seconds>(now.time_since_epoch());
    if (const auto dataFolder = ExtensionUtilities::GroupDataPath()) {
        removeOldFolders(*dataFolder, seconds);
    }
    ShareStaging staging(ownWord(static_cast<std::uint64_t>(seconds.count()),
                                 static_cast<std::uint64_t>(::getpid())));
    staging.isOwn_ = true;
    (void)::lsetxattr(staging.folder_.c_str(), kMark, "1", 1, 0);
    return staging;
}

void ShareStaging::discard(const std::vector<std::string>& copies) const {
    if (folder_.empty()) {
        return;
    }
    (void)FileCoordinator(ExtensionUtilities::GroupDataPath())
        .coordinateWriting(folder_, [&copies](const std::string& folder) {
            for (const std::string& copy : copies) {
                (void)FileManager::removeItem(copy);
            }
            ::rmdir(folder.c_str());  // unless something is in it
        });
}

void ShareStaging::abandon() const {
    constexpr int kMostTries = 10;
    for (int tries = 0; isOwn_ && tries < kMostTries && FileManager::folderExists(folder_);
         ++tries) {
        (void)FileManager::removeItem(folder_);
    }
}

}  // namespace quillet
