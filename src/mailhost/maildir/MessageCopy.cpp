#include "mailhost/maildir/MessageCopy.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "mailhost/maildir/FaultPoint.h"
#include "mailhost/maildir/MessageFiles.h"

#include "platform/files/FileDescriptor.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::mailhost {

using platform::Error;
using platform::FileDescriptor;
using platform::posixError;
using platform::Result;
using platform::uninterrupted;

namespace {

constexpr std::size_t kChunk = std::size_t{256} * 1024;  // bytes
constexpr int kSearches = 5;
constexpr std::chrono::milliseconds kBetweenSearches{50};

using Chunk = std::vector<char>;

Result<FileDescriptor> openMessage(const std::string& path) {
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat found {};
    if (!file || ::fstat(file.get(), &found) != 0) {
        return posixError(errno, path);
    }
    if (!S_ISREG(found.st_mode)) {
        return posixError(EINVAL, path);
    }
    return file;
}

// Fills the chunk except at the end of the file. Returns the number of bytes, or -1.
ssize_t readChunk(int file, off_t offset, Chunk& chunk) {
    chunk.resize(kChunk);
    std::size_t used = 0;
    while (used < chunk.size()) {
        const ssize_t count = uninterrupted([&] {
            return ::pread(
                file, chunk.data() + used, chunk.size() - used, offset + static_cast<off_t>(used));
        });
        if (count < 0) {
            return -1;
        }
        if (count == 0) {
            break;
        }
        used += static_cast<std::size_t>(count);
    }
    chunk.resize(used);
    return static_cast<ssize_t>(used);
}

// Returns 0 or the errno value.
int writeChunk(int file, const Chunk& chunk) {
    std::size_t written = 0;
    while (written < chunk.size()) {
        const ssize_t count = uninterrupted(
            [&] { return ::write(file, chunk.data() + written, chunk.size() - written); });
        if (count < 0) {
            return errno;
        }
        written += static_cast<std::size_t>(count);
    }
    return 0;
}

// Returns 0 or the errno value.
int copyBytes(int source, int copy, const std::function<bool()>& shallEnd) {
    Chunk chunk;
    for (off_t offset = 0;; offset += static_cast<off_t>(chunk.size())) {
        if (shallEnd && shallEnd()) {
            return ECANCELED;
        }
        if (readChunk(source, offset, chunk) < 0) {
            return errno;
        }
        if (chunk.empty()) {
            return 0;
        }
        if (const int code = writeChunk(copy, chunk)) {
            return code;
        }
    }
}

// Gives the copy the mode and the modification time of the source, and syncs it to disk. Returns 0
// or the errno value.
int finishCopy(int source, int copy) {
    struct stat original {};
    if (::fstat(source, &original) != 0 || ::fchmod(copy, original.st_mode & ACCESSPERMS) != 0) {
        return errno;
    }
    const std::array<timespec, 2> times{original.st_atim, original.st_mtim};
    const bool isDone =
        ::futimens(copy, times.data()) == 0 && uninterrupted([&] { return ::fsync(copy); }) == 0;
    return isDone ? 0 : errno;
}

// Removes the copy after an error.
std::optional<Error> makeCopy(int source,
                              const std::string& path,
                              const std::function<bool()>& shallEnd) {
    const FileDescriptor copy(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!copy) {
        return posixError(errno, path);
    }
    int code = copyBytes(source, copy.get(), shallEnd);
    if (code == 0) {
        code = finishCopy(source, copy.get());
    }
    if (code == 0) {
        return std::nullopt;
    }
    ::unlink(path.c_str());
    return posixError(code, path);
}

Result<bool> haveSameBytes(int one, int other) {
    Chunk left;
    Chunk right;
    for (off_t offset = 0;; offset += static_cast<off_t>(left.size())) {
        if (readChunk(one, offset, left) < 0 || readChunk(other, offset, right) < 0) {
            return posixError(errno, "compare");
        }
        if (left != right) {
            return false;
        }
        if (left.empty()) {
            return true;
        }
    }
}

// Whether the open file still is in a folder.
bool hasName(int file) {
    struct stat found {};
    return ::fstat(file, &found) == 0 && found.st_nlink > 0;
}

bool isAt(int file, const std::string& path) {
    struct stat open {};
    struct stat named {};
    return ::fstat(file, &open) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

// Takes the source away under the name that it has by then; flags that it got meanwhile pass to the
// copy. A source that is gone has been taken away by another program. Returns the path of the copy.
Result<std::string> removeSource(int source, const std::string& oldPath, std::string copy) {
    std::string path = oldPath;
    for (int search = 0; search <= kSearches; ++search) {
        if (isAt(source, path)) {
            if (path != oldPath) {
                copy = withFlagsOf(copy, std::string_view(path).substr(path.rfind('/') + 1));
            }
            if (::unlink(path.c_str()) == 0) {
                return copy;
            }
            if (errno != ENOENT) {
                return posixError(errno, path);
            }
        }
        if (search > 0) {
            std::this_thread::sleep_for(kBetweenSearches);
        }
        path = currentPath(oldPath);
    }
    return hasName(source) ? Result<std::string>(posixError(EBUSY, oldPath)) : copy;
}

// Checks that the copy, which is in its place, is on the disk and has the bytes of the source.
// Returns its path, which another program may have changed.
Result<std::string> checkCopy(int source, std::string path) {
    if (auto error = syncFolder(path.substr(0, path.rfind('/')))) {
        return *error;
    }
    auto copy = openMessage(path);
    if (!copy && copy.error().code == ENOENT) {
        path = currentPath(path);
        copy = openMessage(path);
    }
    if (!copy) {
        return copy.error();
    }
    const auto isSame = haveSameBytes(source, copy.value().get());
    if (!isSame) {
        return isSame.error();
    }
    return isSame.value() ? Result<std::string>(path) : posixError(EIO, path);
}

Result<std::string> replaceSource(int source, const Journal::Move& move) {
    auto copy = checkCopy(source, move.target);
    if (!copy) {
        return copy;
    }
    faultPoint("compare");
    auto moved = removeSource(source, move.source, copy.value());
    faultPoint("unlink");
    return moved;
}

}  // namespace

Result<std::string> moveByCopy(const Journal::Move& move, const std::function<bool()>& shallEnd) {
    auto source = openMessage(move.source);
    if (!source) {
        return source.error();
    }
    const int file = source.value().get();
    if (auto error = makeCopy(file, move.temporary, shallEnd)) {
        return *error;
    }
    faultPoint("copy");
    if (const int code = moveWithoutReplacing(move.temporary, move.target)) {
        ::unlink(move.temporary.c_str());
        return posixError(code, move.target);
    }
    faultPoint("link");
    auto moved = replaceSource(file, move);
    if (!moved && hasName(file)) {  // else the copy has become the only file with the message
        removeMessage(move.target);
    }
    return moved;
}

Result<bool> haveSameContents(const std::string& one, const std::string& other) {
    const auto left = openMessage(one);
    if (!left) {
        return left.error();
    }
    const auto right = openMessage(other);
    if (!right) {
        return right.error();
    }
    return haveSameBytes(left.value().get(), right.value().get());
}

}  // namespace quillet::mailhost
