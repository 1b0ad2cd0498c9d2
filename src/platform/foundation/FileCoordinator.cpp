#include "platform/foundation/FileCoordinator.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <utility>

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/Path.h"
#include "platform/foundation/Result.h"

namespace quillet::platform {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestName = 255;  // bytes
constexpr std::string_view kSuffix = ".lock";
constexpr std::string_view kDataFolderItself = "%2E";

std::string hashedName(std::string_view bytes) {
    std::uint64_t hash = 0xcbf29ce484222325;  // FNV-1a
    for (const char byte : bytes) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    }
    std::string name = "%h";
    for (int shift = 60; shift >= 0; shift -= 4) {
        name += "0123456789abcdef"[(hash >> shift) & 0xF];
    }
    return name;
}

// A file name that stands for `bytes` and ends in `suffix`.
std::string lockName(std::string_view bytes, std::string_view suffix) {
    std::string name;
    for (const char byte : bytes) {
        if (byte == '%') {
            name += "%25";
        } else if (byte == '/') {
            name += "%2F";
        } else {
            name += byte;
        }
    }
    if (name.size() + suffix.size() > kLongestName) {
        name = hashedName(bytes);
    }
    return name.append(suffix);
}

// The path with symbolic links followed as far as it exists, without "." and "..". Where they
// cannot be followed (a circle, a folder that may not be entered), the path as it is spelled: what
// cannot be reached has its lock nonetheless.
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

// The item that a path lies in, as the name of its entry in the data folder ("" for the folder
// itself); none outside of it.
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
    // An entry that is a symbolic link out of the data folder still is that entry.
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

// Makes the folder of the lock files and returns the path of the item's.
Result<std::string> lockFileOf(const std::optional<std::string>& dataFolder,
                               const std::string& path) {
    const Result<std::string> runtime = FileManager::runtimeFolder();
    if (!runtime) {
        return runtime.error();
    }
    const std::string canonical = canonicalPath(path);
    std::string folder = Path::appendingPathComponent(runtime.value(), "quillet");
    std::string name = lockName(canonical, kSuffix);
    ::mkdir(folder.c_str(), S_IRWXU);  // a failure shows when the lock file is made
    if (dataFolder) {
        const std::string canonicalFolder = canonicalPath(*dataFolder);
        if (const auto item = itemBelow(canonicalFolder, path, canonical)) {
            folder = Path::appendingPathComponent(folder, lockName(canonicalFolder, ""));
            ::mkdir(folder.c_str(), S_IRWXU);
            name = item->empty() ? std::string(kDataFolderItself).append(kSuffix)
                                 : lockName(*item, kSuffix);
        }
    }
    return Path::appendingPathComponent(folder, name);
}

// A held lock; let go at the end of the scope.
class Lock {
public:
    explicit Lock(FileDescriptor file) : file_(std::move(file)) {}
    Lock(Lock&&) noexcept = default;
    Lock& operator=(Lock&&) noexcept = delete;
    ~Lock() {
        // Closing alone would leave the lock with a child that was forked meanwhile.
        if (file_) {
            ::flock(file_.get(), LOCK_UN);
        }
    }

private:
    FileDescriptor file_;
};

bool isFileAt(const std::string& path, int file) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(file, &opened) == 0 && ::stat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

Result<Lock> acquire(const std::string& lockFile, int operation) {
    for (;;) {
        FileDescriptor file(::open(lockFile.c_str(),
                                   O_RDONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW,
                                   S_ISVTX | S_IRUSR | S_IWUSR));
        if (!file) {
            if (errno == EINTR) {
                continue;
            }
            return posixError(errno, lockFile);
        }
        while (::flock(file.get(), operation) != 0) {
            if (errno != EINTR) {
                return posixError(errno, lockFile);
            }
        }
        // While this call waited, somebody may have swept the file away: the next one to come
        // would lock another file.
        if (isFileAt(lockFile, file.get())) {
            return Lock(std::move(file));
        }
    }
}

}  // namespace

FileCoordinator::FileCoordinator(std::optional<std::string> dataFolder)
    : dataFolder_(std::move(dataFolder)) {}

std::optional<Error> FileCoordinator::coordinateReading(const std::optional<std::string>& path,
                                                        const Accessor& accessor) const {
    return coordinate(path, Access::Shared, accessor);
}

std::optional<Error> FileCoordinator::coordinateWriting(const std::optional<std::string>& path,
                                                        const Accessor& accessor) const {
    return coordinate(path, Access::Exclusive, accessor);
}

std::optional<Error> FileCoordinator::coordinateWritingIfFree(const std::string& path,
                                                              const Accessor& accessor) const {
    const Result<std::string> lockFile = lockFileOf(dataFolder_, path);
    if (!lockFile) {
        return lockFile.error();
    }
    const Result<Lock> lock = acquire(lockFile.value(), LOCK_EX | LOCK_NB);
    if (!lock) {
        return lock.error();
    }
    accessor(path);
    return std::nullopt;
}

std::optional<Error> FileCoordinator::coordinate(const std::optional<std::string>& path,
                                                 Access access,
                                                 const Accessor& accessor) const {
    if (!path) {
        return posixError(EINVAL, "there is no path to coordinate");
    }
    const Result<std::string> lockFile = lockFileOf(dataFolder_, *path);
    if (!lockFile) {
        return lockFile.error();
    }
    const Result<Lock> lock =
        acquire(lockFile.value(), access == Access::Shared ? LOCK_SH : LOCK_EX);
    if (!lock) {
        return lock.error();
    }
    accessor(*path);
    return std::nullopt;
}

}  // namespace quillet::platform
