#include "bench/PlainMail.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "bench/Timing.h"
#include "platform/files/FileDescriptor.h"

namespace quillet::bench {

namespace {

using platform::FileDescriptor;

[[noreturn]] void fail(const std::string& path) {
    throw std::system_error(errno, std::generic_category(), path);
}

FileDescriptor open(const std::string& path, int flags) {
    FileDescriptor file(::open(path.c_str(), flags | O_CLOEXEC, 0600));
    if (!file) {
        fail(path);
    }
    return file;
}

// Calls `take` with the folder and the name of each file until it returns false. Returns the
// milliseconds.
double forEachFile(const std::string& folder, const std::function<bool(int, const char*)>& take) {
    const double start = milliseconds(CLOCK_MONOTONIC);
    bool goesOn = true;
    for (const char* name : {"/cur", "/new"}) {
        const std::unique_ptr<DIR, int (*)(DIR*)> list(::opendir((folder + name).c_str()),
                                                       ::closedir);
        if (!list) {
            fail(folder + name);
        }
        while (const dirent* const entry = goesOn ? ::readdir(list.get()) : nullptr) {
            goesOn = entry->d_name[0] == '.' || take(::dirfd(list.get()), entry->d_name);
        }
    }
    return milliseconds(CLOCK_MONOTONIC) - start;
}

void sync(const std::string& folder) {
    if (::fsync(open(folder, O_RDONLY | O_DIRECTORY).get()) != 0) {
        fail(folder);
    }
}

}  // namespace

double plainListing(const std::string& folder) {
    return forEachFile(folder, [](int, const char*) { return true; });
}

double plainStat(const std::string& folder) {
    return forEachFile(folder, [](int list, const char* name) {
        struct stat found {};
        return ::fstatat(list, name, &found, AT_SYMLINK_NOFOLLOW) == 0;
    });
}

double plainReading(const std::string& folder, std::size_t count) {
    return forEachFile(folder, [&count](int list, const char* name) {
        if (count == 0) {
            return false;
        }
        --count;
        std::array<char, 4096> bytes{};
        const FileDescriptor file(::openat(list, name, O_RDONLY | O_CLOEXEC));
        return file && ::read(file.get(), bytes.data(), bytes.size()) > 0;
    });
}

PlainMove plainMove(const std::string& source, const std::string& target) {
    std::string name;
    forEachFile(source, [&name](int, const char* first) {
        name = first;
        return false;
    });
    const std::string from = source + "/cur/" + name;
    const std::string to = target + "/cur/" + name;
    const FileDescriptor journal = open(target + "/journal", O_WRONLY | O_CREAT | O_APPEND);
    const std::string line = "begin " + from + " " + to + "\n";
    PlainMove move;
    const double start = milliseconds(CLOCK_MONOTONIC);
    if (::write(journal.get(), line.data(), line.size()) < 0 || ::fdatasync(journal.get()) != 0 ||
        ::rename(from.c_str(), to.c_str()) != 0) {
        fail(from);
    }
    move.untilRenamed = milliseconds(CLOCK_MONOTONIC) - start;
    sync(target + "/cur");
    sync(source + "/cur");
    move.whole = milliseconds(CLOCK_MONOTONIC) - start;
    return move;
}

}  // namespace quillet::bench
