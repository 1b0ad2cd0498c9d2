#include "platform/files/TemporaryFile.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>
#include <utility>

namespace quillet::platform {

Result<TemporaryFile> TemporaryFile::beside(const std::string& path) {
    static std::atomic<unsigned> counter{0};
    for (;;) {
        // Short, so that it is allowed wherever the file's own name is.
        const std::string name =
            ".quillet-" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
        std::string temporary = std::filesystem::path(path).replace_filename(name).string();
        FileDescriptor file(
            ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (file) {
            return TemporaryFile(std::move(file), std::move(temporary));
        }
        if (errno != EEXIST && errno != EINTR) {
            return posixError(errno, path);
        }
    }
}

TemporaryFile::TemporaryFile(FileDescriptor file, std::string path)
    : file_(std::move(file)), path_(std::move(path)) {}

TemporaryFile::TemporaryFile(TemporaryFile&& other) noexcept
    : file_(std::move(other.file_)), path_(std::exchange(other.path_, {})) {}

TemporaryFile::~TemporaryFile() {
    if (!path_.empty()) {
        ::unlink(path_.c_str());
    }
}

std::optional<Error> TemporaryFile::replace(const std::string& path) {
    if (auto error = close()) {
        return error;
    }
    if (std::rename(path_.c_str(), path.c_str()) != 0) {
        return posixError(errno, path);
    }
    path_.clear();
    return std::nullopt;
}

std::optional<Error> TemporaryFile::moveTo(const std::string& path) {
    if (auto error = close()) {
        return error;
    }
    // A hard link is the only way that all systems know, but some file systems have none.
    if (::link(path_.c_str(), path.c_str()) == 0) {
        return std::nullopt;
    }
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS) {
        return posixError(errno, path);
    }
    if (::faccessat(AT_FDCWD, path.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) {
        return posixError(EEXIST, path);
    }
    return replace(path);
}

// Some file systems report a full disk only here.
std::optional<Error> TemporaryFile::close() {
    if (file_ && ::close(file_.release()) != 0) {
        return posixError(errno, path_);
    }
    return std::nullopt;
}

}  // namespace quillet::platform
