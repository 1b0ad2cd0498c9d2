#include "platform/files/FileCoordinator.h"

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <utility>

#include "platform/base/Result.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet::platform {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kDataFolderItself = "%2E.lock";

// The path without "." and "..", with symbolic links followed as far as it exists. If they cannot
// be followed (a circle, a folder that may not be entered), the path as it is spelled: an item that
// cannot be reached has a lock too.
std::string canonicalPath(const fs::path& path) {
    std::error_code failure;
    fs::path absolute = fs::absolute(path, failure);
    if (failure) {
        absolute = path;
    }
    const fs::path canonical = fs::weakly_canonical(absolute, failure);
    std::string text = (failure ? absolute.lexically_normal() : canonical).string();
    if (text.size() > 1 && text.ends_with('/')) {
        text.pop_back();
    }
    return text;
}

std::string firstComponent(std::string_view below) {
    return std::string(below.substr(0, below.find('/')));
}

// The entry of the data folder that the path is in ("" for the folder itself), or none if it is
// outside.
std::optional<std::string> itemBelow(const std::string& dataFolder,
                                     const std::string& path,
                                     const std::string& canonical) {
    if (canonical == dataFolder) {
        return "";
    }
    const std::string prefix = dataFolder == "/" ? dataFolder : dataFolder + "/";
    if (canonical.starts_with(prefix)) {
        return firstComponent(std::string_view(canonical).substr(prefix.size()));
    }
    // An entry may be a symbolic link that leads out of the data folder.
    std::error_code ignored;
    for (fs::path rest, parent = fs::absolute(path, ignored); parent.has_relative_path();
         parent = parent.parent_path()) {
        rest = rest.empty() ? parent.filename() : parent.filename() / rest;
        if (canonicalPath(parent.parent_path()) == dataFolder) {
            return firstComponent(rest.string());
        }
    }
    return std::nullopt;
}

// Creates the folders for the item's lock file and returns its path.
Result<std::string> lockFileOf(const std::optional<std::string>& dataFolder,
                               const std::string& path) {
    const Result<std::string> locks = FileLock::folder();
    if (!locks) {
        return locks.error();
    }
    const std::string canonical = canonicalPath(path);
    if (dataFolder) {
        const std::string canonicalFolder = canonicalPath(*dataFolder);
        if (const auto item = itemBelow(canonicalFolder, path, canonical)) {
            const std::string folder =
                Path::appendingPathComponent(locks.value(), FileLock::nameFor(canonicalFolder, ""));
            if (auto error = FileManager::createFolder(folder)) {
                return *std::move(error);
            }
            return Path::appendingPathComponent(
                folder, item->empty() ? kDataFolderItself : FileLock::nameFor(*item));
        }
    }
    return Path::appendingPathComponent(locks.value(), FileLock::nameFor(canonical));
}

}  // namespace

FileCoordinator::FileCoordinator(std::optional<std::string> dataFolder)
    : dataFolder_(std::move(dataFolder)) {}

std::optional<Error> FileCoordinator::coordinateReading(const std::optional<std::string>& path,
                                                        const Accessor& accessor) const {
    return coordinate(path, FileLock::Access::Shared, Waiting::Allowed, accessor);
}

std::optional<Error> FileCoordinator::coordinateWriting(const std::optional<std::string>& path,
                                                        const Accessor& accessor) const {
    return coordinate(path, FileLock::Access::Exclusive, Waiting::Allowed, accessor);
}

std::optional<Error> FileCoordinator::coordinateReadingIfFree(const std::string& path,
                                                              const Accessor& accessor) const {
    return coordinate(path, FileLock::Access::Shared, Waiting::Refused, accessor);
}

std::optional<Error> FileCoordinator::coordinateWritingIfFree(const std::string& path,
                                                              const Accessor& accessor) const {
    return coordinate(path, FileLock::Access::Exclusive, Waiting::Refused, accessor);
}

std::optional<Error> FileCoordinator::coordinate(const std::optional<std::string>& path,
                                                 FileLock::Access access,
                                                 Waiting waiting,
                                                 const Accessor& accessor) const {
    if (!path) {
        return posixError(EINVAL, "there is no path to coordinate");
    }
    const Result<std::string> lockFile = lockFileOf(dataFolder_, *path);
    if (!lockFile) {
        return lockFile.error();
    }
    const Result<FileLock> lock = waiting == Waiting::Allowed
                                      ? FileLock::wait(lockFile.value(), access, *path)
                                      : FileLock::tryNow(lockFile.value(), access);
    if (!lock) {
        return lock.error();
    }
    accessor(*path);
    return std::nullopt;
}

}  // namespace quillet::platform
