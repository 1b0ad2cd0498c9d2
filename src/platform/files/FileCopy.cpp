#include <algorithm>
#include <cerrno>
#include <limits>
#include <sys/sendfile.h>
#include <unistd.h>

#include "platform/files/FileManager.h"
#include "platform/files/RegularFile.h"
#include "platform/files/TemporaryFile.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::platform::FileManager {

namespace {

constexpr std::size_t kLargestStep = std::size_t{1} << 30;  // bytes per system call

// Copies up to `size` bytes at the files' positions. Returns the number of bytes copied, or a
// negative number with errno set.
ssize_t copyStep(int from, int to, std::size_t size) {
    // Shares blocks if the file system can, and copies on the server if it is remote.
    const ssize_t copied =
        uninterrupted([&] { return ::copy_file_range(from, nullptr, to, nullptr, size, 0); });
    const bool refused = copied < 0 && (errno == EXDEV || errno == EINVAL || errno == EOPNOTSUPP ||
                                        errno == ENOSYS || errno == EPERM);
    // For files that the system makes up, such as /proc/meminfo, it copies nothing.
    if (copied > 0 || (copied < 0 && !refused)) {
        return copied;
    }
    return uninterrupted([&] { return ::sendfile(to, from, nullptr, size); });
}

// Copies the contents that the file had when it was opened; all that there is if its size is 0.
std::optional<Error> copyContents(const RegularFile& source,
                                  int destination,
                                  const std::string& path) {
    const std::size_t expected = source.size;
    std::size_t left = expected > 0 ? expected : std::numeric_limits<std::size_t>::max();
    while (left > 0) {
        const ssize_t copied =
            copyStep(source.file.get(), destination, std::min(left, kLargestStep));
        if (copied < 0) {
            return posixError(errno, path);
        }
        if (copied == 0) {
            break;
        }
        left -= static_cast<std::size_t>(copied);
    }
    if (expected > 0 && left > 0) {
        return posixError(ESTALE, path + " became shorter while it was copied");
    }
    return std::nullopt;
}

}  // namespace

std::optional<Error> copyFile(const std::string& source, const std::string& destination) {
    for (const std::string& path : {source, destination}) {
        if (path.find('\0') != std::string::npos) {
            return posixError(EINVAL, path);
        }
    }
    const Result<RegularFile> from = openRegularFile(source);
    if (!from) {
        return from.error();
    }
    Result<TemporaryFile> to = TemporaryFile::beside(destination);
    if (!to) {
        return to.error();
    }
    if (auto error = copyContents(from.value(), to.value().descriptor(), source)) {
        return error;
    }
    return to.value().moveTo(destination);
}

}  // namespace quillet::platform::FileManager
