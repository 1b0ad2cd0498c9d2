#include "platform/files/RegularFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

#include "platform/files/Uninterrupted.h"

namespace quillet::platform {

namespace {

// Why a file cannot be read, as an errno value; 0 for a regular file. `result` is what the system
// returned with `found`.
int failureOf(int result, const struct stat& found) {
    if (result != 0) {
        return errno;
    }
    if (S_ISREG(found.st_mode)) {
        return 0;
    }
    return S_ISDIR(found.st_mode) ? EISDIR : EINVAL;
}

}  // namespace

Result<RegularFile> openRegularFile(const std::string& path) {
    // The kind is checked before, since opening a FIFO or a device may wake up the program at its
    // other end, and again after, since the file may have been replaced meanwhile.
    struct stat found {};
    if (const int failure = failureOf(::stat(path.c_str(), &found), found)) {
        return posixError(failure, path);
    }
    FileDescriptor file(uninterrupted(
        [&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY); }));
    if (const int failure = file ? failureOf(::fstat(file.get(), &found), found) : errno) {
        return posixError(failure, path);
    }
    return RegularFile{std::move(file),
                       static_cast<std::size_t>(std::max<off_t>(found.st_size, 0))};
}

}  // namespace quillet::platform
