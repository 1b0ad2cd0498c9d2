#include "platform/files/FileLock.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileManager.h"
#include "platform/files/LockWait.h"
#include "platform/files/Path.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::platform {

namespace {

constexpr std::size_t kLongestName = 255;  // bytes

std::string hashedName(std::string_view bytes) {
    std::uint64_t hash = 0xcbf29ce484222325;  // FNV-1a
    for (const char byte : bytes) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    }
    std::string name = "%h";
    for (int shift = 60; shift >= 0; shift -= 4) {
        name += "0123456789abcdef"[(hash >> shift) & 0xF];
    }
    return name;
}

Result<FileDescriptor> openLockFile(const std::string& path) {
    // O_NONBLOCK: opening a FIFO must not wait.
    FileDescriptor file(uninterrupted([&] {
        return ::open(path.c_str(),
                      O_RDONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                      S_ISVTX | S_IRUSR | S_IWUSR);
    }));
    struct stat found {};
    if (!file || ::fstat(file.get(), &found) != 0) {
        return posixError(errno, path);
    }
    if (!S_ISREG(found.st_mode)) {
        return posixError(EINVAL, path + " is no regular file");
    }
    return file;
}

// Whether the open file still is the one at the path. If it was removed before it was locked, the
// next program locks another file.
bool isFileAt(const std::string& path, int file) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(file, &opened) == 0 && ::stat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

}  // namespace

// An open lock file, shared by the thread that wants its lock and the one that waits in the kernel.
// The latter releases the lock of a wait that was given up.
class FileLock::File {
public:
    static constexpr int kNone = -1;

    explicit File(FileDescriptor file) : file_(std::move(file)) {}
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() { unlock(); }

    int descriptor() const { return file_.get(); }
    // Takes the lock; waits in the kernel unless LOCK_NB is set. Returns 0 or the errno value.
    int lock(int operation) const {
        return uninterrupted([&] { return ::flock(file_.get(), operation); }) == 0 ? 0 : errno;
    }
    // Closing alone would leave the lock to a child that was forked meanwhile.
    void unlock() const { ::flock(file_.get(), LOCK_UN); }

    // Starts a thread that waits for the lock; false if the system cannot start one.
    static bool startWait(const std::shared_ptr<File>& file, int operation) {
        file->over_ = FileDescriptor(::eventfd(0, EFD_CLOEXEC));
        if (!file->over_) {
            return false;
        }
        try {
            std::thread([file, operation] {
                file->outcome_ = file->lock(operation);
                ::eventfd_write(file->over_.get(), 1);
            }).detach();
        } catch (const std::system_error&) {
            return false;
        }
        return true;
    }
    int over() const { return over_.get(); }
    int outcome() const {
        return outcome_;
    }  // what lock() returned to the waiting thread, or kNone

private:
    FileDescriptor file_;
    FileDescriptor over_;
    std::atomic<int> outcome_ = kNone;
};

FileLock::FileLock(std::shared_ptr<File> file) : file_(std::move(file)) {}

FileLock::~FileLock() {
    if (file_) {
        file_->unlock();  // the thread that waited may still own the file
    }
}

Result<FileLock> FileLock::tryNow(const std::string& path, Access access) {
    return take(path, access, nullptr);
}

Result<FileLock> FileLock::wait(const std::string& path, Access access, const std::string& item) {
    return take(path, access, &item);
}

Result<FileLock> FileLock::take(const std::string& path, Access access, const std::string* item) {
    for (;;) {
        Result<FileDescriptor> opened = openLockFile(path);
        if (!opened) {
            return opened.error();
        }
        const auto file = std::make_shared<File>(std::move(opened.value()));
        const int operation = access == Access::Shared ? LOCK_SH : LOCK_EX;
        int failure = file->lock(operation | LOCK_NB);
        if (failure == EWOULDBLOCK && item != nullptr) {
            failure = waitFor(file, operation, *item);
        }
        if (failure == ECANCELED) {
            return posixError(failure, "the program ends while another one holds " + path);
        }
        if (failure != 0) {
            return posixError(failure, path);
        }
        if (isFileAt(path, file->descriptor())) {
            return FileLock(file);
        }
    }
}

int FileLock::waitFor(const std::shared_ptr<File>& file, int operation, const std::string& item) {
    if (areLockWaitsEnded()) {
        return ECANCELED;
    }
    if (!File::startWait(file, operation)) {
        return file->lock(operation);
    }
    lockWaiter()(LockWait(item, file->over()));
    const int outcome = file->outcome();
    return outcome == File::kNone ? ECANCELED : outcome;
}

Result<std::string> FileLock::folder() {
    const Result<std::string> runtime = FileManager::runtimeFolder();
    if (!runtime) {
        return runtime.error();
    }
    std::string folder = Path::appendingPathComponent(runtime.value(), "quillet");
    if (auto error = FileManager::createFolder(folder)) {
        return *std::move(error);
    }
    return folder;
}

std::string FileLock::nameFor(std::string_view bytes, std::string_view suffix) {
    std::string name;
    for (const char byte : bytes) {
        if (byte == '%') {
            name += "%25";
        } else if (byte == '/') {
            name += "%2F";
        } else {
            name += byte;
        }
    }
    if (name.size() + suffix.size() > kLongestName) {
        name = hashedName(bytes);
    }
    return name.append(suffix);
}

}  // namespace quillet::platform
