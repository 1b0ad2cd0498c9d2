#include "mailhost/maildir/FolderListing.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <optional>

#include "platform/files/FileDescriptor.h"
#include "platform/files/Path.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::mailhost {

namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
// The system's clock for times of files stands still for up to 10 ms. A folder that changed less
// than this ago may change again and keep its time.
constexpr std::int64_t kYoungest = 20'000'000;  // nanoseconds
// Some file systems keep whole seconds only, or even ones.
constexpr std::int64_t kYoungestWhole = 2 * kNanosecondsPerSecond + kYoungest;

struct Subfolder {
    const char* name;
    bool isNew;
};
// A message that moves from "new" to "cur" while both are listed is seen twice in this order, and
// not at all in the other.
constexpr std::array<Subfolder, 2> kSubfolders{{{"new", true}, {"cur", false}}};

std::int64_t nanosecondsOf(const timespec& time) {
    return time.tv_sec * kNanosecondsPerSecond + time.tv_nsec;
}

FolderStamp stampOf(const struct stat& found) {
    return {found.st_dev, found.st_ino, nanosecondsOf(found.st_mtim)};
}

bool isYoung(const FolderStamps& stamps) {
    timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    const std::int64_t now = nanosecondsOf(time);
    return std::any_of(stamps.begin(), stamps.end(), [now](const FolderStamp& stamp) {
        const bool isWhole = stamp.time % kNanosecondsPerSecond == 0;
        return std::abs(now - stamp.time) < (isWhole ? kYoungestWhole : kYoungest);
    });
}

bool isMessageFile(int folder, const dirent& entry) {
    if (entry.d_name[0] == '.') {
        return false;
    }
    if (entry.d_type != DT_UNKNOWN) {
        return entry.d_type == DT_REG;
    }
    struct stat found {};
    return ::fstatat(folder, entry.d_name, &found, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISREG(found.st_mode);
}

std::optional<platform::Error> addFiles(const std::string& path,
                                        bool isNew,
                                        FolderListing& listing) {
    platform::FileDescriptor file(platform::uninterrupted(
        [&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!file && errno == ENOENT && isNew) {
        return std::nullopt;
    }
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(file ? ::fdopendir(file.get()) : nullptr,
                                                     ::closedir);
    if (!folder) {
        return platform::posixError(errno, path);
    }
    const int descriptor = file.release();
    errno = 0;
    while (const dirent* entry = ::readdir(folder.get())) {
        if (isMessageFile(descriptor, *entry)) {
            const std::string_view name = entry->d_name;
            listing.files.push_back({static_cast<std::uint32_t>(listing.names.size()),
                                     static_cast<std::uint32_t>(name.size()),
                                     isNew});
            listing.names.append(name);
        }
        errno = 0;
    }
    return errno == 0 ? std::nullopt : std::optional(platform::posixError(errno, path));
}

// Lists the folder once, into the storage of `listing`.
std::optional<platform::Error> listOnce(const std::string& folder, FolderListing& listing) {
    const platform::Result<FolderStamps> before = stampsOf(folder);
    if (!before) {
        return before.error();
    }
    listing.names.clear();
    listing.files.clear();
    // Asked before, since a change during the listing may fall into the same tick of the clock.
    const bool wasYoung = isYoung(before.value());
    for (const auto& [name, isNew] : kSubfolders) {
        if (auto error =
                addFiles(platform::Path::appendingPathComponent(folder, name), isNew, listing)) {
            return error;
        }
    }
    const platform::Result<FolderStamps> after = stampsOf(folder);
    if (!after) {
        return after.error();
    }
    listing.stamps = after.value();
    listing.isSettled = !wasYoung && before.value() == after.value();
    return std::nullopt;
}

}  // namespace

std::string fileInFolder(bool isInNew, std::string_view name) {
    return std::string(isInNew ? "new/" : "cur/").append(name);
}

platform::Result<FolderStamps> stampsOf(const std::string& folder) {
    FolderStamps stamps;
    for (std::size_t i = 0; i < kSubfolders.size(); ++i) {
        const std::string path =
            platform::Path::appendingPathComponent(folder, kSubfolders[i].name);
        struct stat found {};
        if (::stat(path.c_str(), &found) == 0) {
            stamps[i] = stampOf(found);
        } else if (errno != ENOENT || !kSubfolders[i].isNew) {
            return platform::posixError(errno, path);
        }
    }
    return stamps;
}

platform::Result<FolderListing> listMailFolder(const std::string& folder, int mostListings) {
    FolderListing listing;
    for (int i = 0; i < mostListings && !listing.isSettled; ++i) {
        if (auto error = listOnce(folder, listing)) {
            return *error;
        }
    }
    return listing;
}

}  // namespace quillet::mailhost
