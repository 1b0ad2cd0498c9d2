#include "platform/files/FileManager.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"
#include "platform/files/Path.h"
#include "platform/files/RegularFile.h"
#include "platform/files/TemporaryFile.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::platform::FileManager {

namespace {

// The status of what is at the path; false if nothing is. A path with a zero byte names nothing:
// the system would read it up to there only.
bool status(const std::string& path, struct stat& found) {
    return path.find('\0') == std::string::npos && ::stat(path.c_str(), &found) == 0;
}

// The absolute path in an environment variable, or none.
std::optional<std::string> absoluteVariable(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr || value[0] != '/') {
        return std::nullopt;
    }
    return value;
}

// Reads to the end of the file, wherever that is by now. Returns 0 or the errno value. The buffer
// is one byte longer than expected, so that a file of the expected size needs no second buffer.
int readAll(int file, ByteBuffer& bytes, std::size_t expected, std::size_t limit) {
    bytes.resize(0);  // so that the old contents are not moved
    bytes.resize(std::min(expected, limit) + 1);
    for (std::size_t used = 0;;) {
        if (used > limit) {
            return EFBIG;
        }
        if (used == bytes.size()) {
            bytes.resize(std::min(2 * used, limit + 1));
        }
        const ssize_t count = uninterrupted(
            [&] { return ::read(file, bytes.mutableData() + used, bytes.size() - used); });
        if (count < 0) {
            return errno;
        }
        if (count == 0) {
            bytes.resize(used);
            return 0;
        }
        used += static_cast<std::size_t>(count);
    }
}

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count =
            uninterrupted([&] { return ::write(file, bytes.data(), bytes.size()); });
        if (count < 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool isPrivateFolder(const struct stat& found) {
    return S_ISDIR(found.st_mode) && found.st_uid == ::geteuid() &&
           (found.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

}  // namespace

bool fileExists(const std::string& path) {
    struct stat found {};
    return status(path, found);
}

bool folderExists(const std::string& path) {
    struct stat found {};
    return status(path, found) && S_ISDIR(found.st_mode);
}

std::optional<Error> checkFolder(const std::string& path) {
    struct stat found {};
    errno = ENOENT;  // for a path with a zero byte
    if (!status(path, found)) {
        return posixError(errno, path);
    }
    if (!S_ISDIR(found.st_mode)) {
        return posixError(ENOTDIR, path);
    }
    if (::faccessat(AT_FDCWD, path.c_str(), R_OK | X_OK, AT_EACCESS) != 0) {
        return posixError(errno, path);
    }
    return std::nullopt;
}

Result<std::vector<std::string>> contentsOfFolder(const std::string& path) {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(path.c_str()), &::closedir);
    if (!folder) {
        return posixError(errno, path);
    }
    std::vector<std::string> names;
    errno = 0;
    while (const dirent* entry = ::readdir(folder.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            names.emplace_back(name);
        }
        errno = 0;
    }
    if (errno != 0) {
        return posixError(errno, path);
    }
    return names;
}

std::optional<Error> readFile(const std::string& path, ByteBuffer& bytes, std::size_t maximumSize) {
    const Result<RegularFile> found = openRegularFile(path);
    if (!found) {
        return found.error();
    }
    const auto& [file, size] = found.value();
    if (size > maximumSize) {
        return posixError(EFBIG, path);
    }
    const std::size_t limit = std::min<std::size_t>(maximumSize, SSIZE_MAX - 1);
    if (const int failure = readAll(file.get(), bytes, size, limit)) {
        return posixError(failure, path);
    }
    return std::nullopt;
}

std::optional<Error> writeFileAtomically(const std::string& path, std::string_view bytes) {
    // The target of a symbolic link is replaced, not the link.
    std::error_code ignored;
    const std::filesystem::path canonical = std::filesystem::canonical(path, ignored);
    const std::string target = canonical.empty() ? path : canonical.string();

    struct stat old {};
    const bool replaces = status(target, old);
    if (replaces && !S_ISREG(old.st_mode)) {
        return posixError(S_ISDIR(old.st_mode) ? EISDIR : EINVAL, path);
    }
    Result<TemporaryFile> made = TemporaryFile::beside(target);
    if (!made) {
        return made.error();
    }
    TemporaryFile& file = made.value();
    if (!writeAll(file.descriptor(), bytes) ||
        (replaces &&
         ::fchmod(file.descriptor(), old.st_mode & static_cast<mode_t>(ALLPERMS)) != 0) ||
        ::fsync(file.descriptor()) != 0) {
        return posixError(errno, path);
    }
    return file.replace(target);
}

std::optional<Error> writeFile(const std::string& path, std::string_view bytes) {
    struct stat found {};
    if (!status(path, found) || S_ISREG(found.st_mode) || S_ISDIR(found.st_mode)) {
        return writeFileAtomically(path, bytes);
    }
    const FileDescriptor file(
        uninterrupted([&] { return ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY); }));
    if (!file || !writeAll(file.get(), bytes)) {
        return posixError(errno, path);
    }
    return std::nullopt;
}

std::optional<Error> createFolder(const std::string& path) {
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        if (::mkdir(path.substr(0, end).c_str(), S_IRWXU) != 0 && errno != EEXIST) {
            return posixError(errno, path);
        }
        if (end == std::string::npos) {
            break;
        }
    }
    return folderExists(path) ? std::nullopt : std::optional(posixError(ENOTDIR, path));
}

std::optional<Error> removeItem(const std::string& path) {
    std::error_code failure;
    const std::uintmax_t removed = std::filesystem::remove_all(path, failure);
    if (failure || removed == 0) {
        return posixError(failure ? failure.value() : ENOENT, path);
    }
    return std::nullopt;
}

std::optional<std::string> containerPathForGroup(std::string_view group) {
    if (const char* container = std::getenv("QUILLET_CONTAINER")) {
        std::error_code failure;  // the path is empty, or the working folder is gone
        const std::filesystem::path path = std::filesystem::absolute(container, failure);
        return failure ? std::nullopt : std::optional(path.string());
    }
    std::optional<std::string> data = absoluteVariable("XDG_DATA_HOME");
    if (!data) {
        const std::optional<std::string> home = absoluteVariable("HOME");
        if (!home) {
            return std::nullopt;
        }
        data = Path::appendingPathComponent(*home, ".local/share");
    }
    return Path::appendingPathComponent(Path::appendingPathComponent(*data, "group-containers"),
                                        group);
}

Result<std::string> temporaryFolder() {
    const std::string name = "quillet-" + std::to_string(::geteuid());
    std::string folder =
        Path::appendingPathComponent(absoluteVariable("TMPDIR").value_or("/tmp"), name);
    if (::mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
        return posixError(errno, folder);
    }
    // lstat, because another user may have put a symbolic link there.
    struct stat found {};
    if (::lstat(folder.c_str(), &found) != 0) {
        return posixError(errno, folder);
    }
    if (!isPrivateFolder(found)) {
        return posixError(EPERM, folder + " is not a folder private to the user");
    }
    return folder;
}

Result<std::string> runtimeFolder() {
    struct stat found {};
    if (const auto session = absoluteVariable("XDG_RUNTIME_DIR");
        session && status(*session, found) && isPrivateFolder(found)) {
        return *session;
    }
    return temporaryFolder();
}

}  // namespace quillet::platform::FileManager
