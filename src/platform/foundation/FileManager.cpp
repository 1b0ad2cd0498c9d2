#include "platform/foundation/FileManager.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Path.h"

namespace quillet::platform::FileManager {

namespace {

// Repeats a system call that a signal has interrupted.
template <typename Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

bool status(const std::string& path, struct stat& found) {
    return ::stat(path.c_str(), &found) == 0;
}

// An environment variable that names an absolute path; none otherwise.
std::optional<std::string> absoluteVariable(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr || value[0] != '/') {
        return std::nullopt;
    }
    return value;
}

// Opens a regular file. The kind is asked before, since opening a FIFO or a device alone may wake
// whoever is at its other end, and again after, since the file may have been replaced meanwhile.
Result<FileDescriptor> openRegularFile(const std::string& path, std::size_t& size) {
    struct stat found {};
    if (!status(path, found)) {
        return posixError(errno, path);
    }
    if (!S_ISREG(found.st_mode)) {
        return posixError(EINVAL, path);
    }
    FileDescriptor file(uninterrupted(
        [&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY); }));
    if (!file || ::fstat(file.get(), &found) != 0) {
        return posixError(errno, path);
    }
    if (!S_ISREG(found.st_mode)) {
        return posixError(EINVAL, path);
    }
    size = static_cast<std::size_t>(std::max<off_t>(found.st_size, 0));
    return file;
}

// Reads until the end of the file, wherever that is by now. The buffer is kept one byte longer
// than what is expected, so that a file of the expected length needs no second buffer.
std::optional<Error> readAll(int file, ByteBuffer& bytes, std::size_t expected, std::size_t limit) {
    std::size_t used = 0;
    bytes.resize(0);  // nothing of the old contents has to be moved
    bytes.resize(std::min(expected, limit) + 1);
    for (;;) {
        if (used == bytes.size()) {
            if (used > limit) {
                bytes.resize(0);
                return posixError(EFBIG, "read");
            }
            bytes.resize(std::min(2 * used, limit + 1));
        }
        const ssize_t count = uninterrupted(
            [&] { return ::read(file, bytes.mutableData() + used, bytes.size() - used); });
        if (count < 0) {
            const int code = errno;
            bytes.resize(0);
            return posixError(code, "read");
        }
        if (count == 0) {
            bytes.resize(used);
            return std::nullopt;
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

// A new empty file in the folder; its name begins with "." and is as short as the folder's
// longest name may be long. Its mode follows the process's file mode mask.
FileDescriptor createTemporaryFile(const std::string& folder, std::string& path) {
    static std::atomic<unsigned> counter{0};
    FileDescriptor file;
    do {
        const std::string name =
            ".quillet-" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
        path = Path::appendingPathComponent(folder, name);
        file = FileDescriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    } while (!file && (errno == EEXIST || errno == EINTR));
    return file;
}

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

// Fills, syncs and closes the file; false with errno set.
bool finishFile(FileDescriptor file, std::string_view bytes, std::optional<mode_t> mode) {
    if (!writeAll(file.get(), bytes) || (mode && ::fchmod(file.get(), *mode) != 0) ||
        ::fsync(file.get()) != 0) {
        return false;
    }
    return ::close(file.release()) == 0;
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
    std::size_t expected = 0;
    const Result<FileDescriptor> file = openRegularFile(path, expected);
    if (!file) {
        return file.error();
    }
    if (expected > maximumSize) {
        return posixError(EFBIG, path);
    }
    const std::size_t limit = std::min<std::size_t>(maximumSize, SSIZE_MAX - 1);
    if (auto error = readAll(file.value().get(), bytes, expected, limit)) {
        return posixError(static_cast<int>(error->code), path);
    }
    return std::nullopt;
}

std::optional<Error> writeFileAtomically(const std::string& path, std::string_view bytes) {
    // A symbolic link keeps pointing to the file, which is what gets replaced.
    std::error_code ignored;
    const std::filesystem::path canonical = std::filesystem::canonical(path, ignored);
    const std::string target = canonical.empty() ? path : canonical.string();

    std::optional<mode_t> mode;
    struct stat old {};
    if (status(target, old)) {
        mode = old.st_mode & static_cast<mode_t>(ALLPERMS);
    }
    std::string temporary;
    FileDescriptor file = createTemporaryFile(folderOf(target), temporary);
    if (!file) {
        return posixError(errno, path);
    }
    if (!finishFile(std::move(file), bytes, mode) ||
        std::rename(temporary.c_str(), target.c_str()) != 0) {
        const int code = errno;
        ::unlink(temporary.c_str());
        return posixError(code, path);
    }
    return std::nullopt;
}

std::optional<Error> createFolder(const std::string& path) {
    std::error_code failure;
    std::filesystem::create_directories(path, failure);
    if (failure) {
        return posixError(failure.value(), path);
    }
    return std::nullopt;
}

std::optional<std::string> containerPathForGroup(std::string_view group) {
    if (const char* container = std::getenv("QUILLET_CONTAINER")) {
        return container[0] != '\0' ? std::optional<std::string>(container) : std::nullopt;
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

Result<std::string> runtimeFolder() {
    struct stat found {};
    if (const auto session = absoluteVariable("XDG_RUNTIME_DIR");
        session && status(*session, found) && isPrivateFolder(found)) {
        return *session;
    }
    const std::string name = "quillet-" + std::to_string(::geteuid());
    std::string folder =
        Path::appendingPathComponent(absoluteVariable("TMPDIR").value_or("/tmp"), name);
    if (::mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
        return posixError(errno, folder);
    }
    // Somebody else may have put a symbolic link there: it is looked at, not followed.
    if (::lstat(folder.c_str(), &found) != 0) {
        return posixError(errno, folder);
    }
    if (!isPrivateFolder(found)) {
        return posixError(EPERM, folder + " is not a folder private to the user");
    }
    return folder;
}

}  // namespace quillet::platform::FileManager
