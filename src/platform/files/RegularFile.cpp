#include "platform/files/RegularFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

#include "platform/files/Uninterrupted.h"

namespace quillet::platform {

namespace {

// The errno value that refuses a file of this mode, 0 for a regular file.
int refusalOf(mode_t mode) {
    if (S_ISREG(mode)) {
        return 0;
    }
    return S_ISDIR(mode) ? EISDIR : EINVAL;
}

}  // namespace

Result<RegularFile> openRegularFile(const std::string& path) {
    // The kind is asked before, since opening a FIFO or a device alone may wake whoever is at its
    // other end, and again after, since the file may have been replaced meanwhile.
    struct stat found {};
    if (::stat(path.c_str(), &found) != 0) {
        return posixError(errno, path);
    }
    if (const int refusal = refusalOf(found.st_mode)) {
        return posixError(refusal, path);
    }
    FileDescriptor file(uninterrupted(
        [&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY); }));
    if (!file || ::fstat(file.get(), &found) != 0) {
        return posixError(errno, path);
    }
    if (const int refusal = refusalOf(found.st_mode)) {
        return posixError(refusal, path);
    }
    return RegularFile{std::move(file),
                       static_cast<std::size_t>(std::max<off_t>(found.st_size, 0))};
}

}  // namespace quillet::platform
