#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/Error.h"
#include "platform/base/Result.h"

namespace quillet::platform {

// A kernel lock (flock) on a file of the user's own, which is made where it is missing. It is let
// go with the object and with the process. Any thread.
class FileLock {
public:
    enum class Access { Shared, Exclusive };

    // The lock at once. An error where somebody holds it (EWOULDBLOCK), where the file cannot be
    // made or opened, and where it is no regular file, which is never waited for.
    static Result<FileLock> tryNow(const std::string& path, Access access);

    // Waits for the lock as LockWait.h tells, or not at all after endLockWaits(): then a lock that
    // somebody holds is an error (ECANCELED). `item` is what the lock is for.
    static Result<FileLock> wait(const std::string& path, Access access, const std::string& item);

    // The folder of all lock files, "quillet" in the runtime folder (see FileManager), which is
    // made with mode 0700. An error names the folder that cannot be made.
    static Result<std::string> folder();

    // A file name that stands for `bytes` and ends in `suffix`: "%" is written as "%25" and "/" as
    // "%2F"; a name that would be longer than 255 bytes is "%h" and the 64-bit FNV-1a hash of
    // `bytes` in 16 lower-case hexadecimal digits.
    static std::string nameFor(std::string_view bytes, std::string_view suffix = ".lock");

    FileLock(FileLock&&) noexcept = default;
    FileLock& operator=(FileLock&&) noexcept = delete;
    ~FileLock();

private:
    class File;
    explicit FileLock(std::shared_ptr<File> file);

    static int waitFor(const std::shared_ptr<File>& file, int operation, const std::string& item);

    std::shared_ptr<File> file_;
};

// Makes a folder of lock files (mode 0700) below one that exists; an existing one is no error.
std::optional<Error> makeLockFolder(const std::string& folder);

}  // namespace quillet::platform
