#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/Error.h"
#include "platform/base/Result.h"

namespace quillet::platform {

// A kernel lock (flock) on a file of the user, which is created if it is missing. The lock ends
// with the object and with the process. Any thread.
class FileLock {
public:
    enum class Access { Shared, Exclusive };

    // Takes the lock at once. It is an error if the lock is held elsewhere (EWOULDBLOCK), if the
    // file cannot be created or opened, and if it is not a regular file. Never waits.
    static Result<FileLock> tryNow(const std::string& path, Access access);

    // Waits for the lock (see LockWait.h); `item` is the path of what the lock is for. After
    // endLockWaits() a lock that is held elsewhere is an error (ECANCELED). Other errors as above.
    static Result<FileLock> wait(const std::string& path, Access access, const std::string& item);

    // Creates the folder of all lock files, "quillet" in the runtime folder (see FileManager), with
    // mode 0700 and returns its path. An error names the folder that cannot be created.
    static Result<std::string> folder();

    // A file name for `bytes` that ends in `suffix`: "%" is written as "%25" and "/" as "%2F".
    // Instead of a name longer than 255 bytes it is "%h", the 64-bit FNV-1a hash of `bytes` in 16
    // lower-case hexadecimal digits, and `suffix`.
    static std::string nameFor(std::string_view bytes, std::string_view suffix = ".lock");

    FileLock(FileLock&&) noexcept = default;
    FileLock& operator=(FileLock&&) noexcept = delete;
    ~FileLock();

private:
    class File;
    explicit FileLock(std::shared_ptr<File> file);

    // Waits for `item`; does not wait if it is null.
    static Result<FileLock> take(const std::string& path, Access access, const std::string* item);
    static int waitFor(const std::shared_ptr<File>& file, int operation, const std::string& item);

    std::shared_ptr<File> file_;
};

}  // namespace quillet::platform
