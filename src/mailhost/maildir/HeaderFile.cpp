#include "mailhost/maildir/HeaderFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "mailhost/maildir/HeaderFields.h"
#include "mailhost/maildir/MessageHeader.h"

#include "platform/files/FileDescriptor.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::mailhost {

namespace {

constexpr std::size_t kHeaderStep = std::size_t{8} * 1024;  // bytes

// Whether the header goes on behind `bytes`, of which the first `known` were looked at before.
bool goesOn(std::string_view bytes, std::size_t known) {
    // The empty line may begin at the end of what is known.
    constexpr std::size_t kLineEnd = 3;
    return bytes.size() < kLongestHeader &&
           !HeaderFields::endIn(bytes, known - std::min(known, kLineEnd));
}

platform::Result<std::string> readHeaderOf(int file, const std::string& path) {
    std::string bytes;
    std::size_t known = 0;
    do {
        known = bytes.size();
        bytes.resize(std::min(known + std::max(known, kHeaderStep), kLongestHeader));
        const ssize_t count = platform::uninterrupted(
            [&] { return ::read(file, bytes.data() + known, bytes.size() - known); });
        if (count < 0) {
            return platform::posixError(errno, path);
        }
        bytes.resize(known + static_cast<std::size_t>(count));
    } while (bytes.size() > known && goesOn(bytes, known));
    return bytes;
}

}  // namespace

platform::Result<std::string> readHeaderBytes(const std::string& path) {
    // Opening a FIFO or a device may wake up the program at its other end, so look before.
    struct stat found {};
    if (::lstat(path.c_str(), &found) != 0) {
        return platform::posixError(errno, path);
    }
    if (!S_ISREG(found.st_mode)) {
        return platform::posixError(S_ISLNK(found.st_mode) ? ELOOP : EINVAL, path);
    }
    const platform::FileDescriptor file(platform::uninterrupted([&] {
        return ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    }));
    if (!file || ::fstat(file.get(), &found) != 0) {
        return platform::posixError(errno, path);
    }
    if (!S_ISREG(found.st_mode)) {
        return platform::posixError(EINVAL, path);
    }
    return readHeaderOf(file.get(), path);
}

}  // namespace quillet::mailhost
