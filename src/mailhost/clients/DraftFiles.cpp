#include "mailhost/clients/DraftFiles.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <sys/stat.h>
#include <thread>

#include "handoff/StagedFile.h"
#include "model/GoodPath.h"
#include "platform/base/Log.h"
#include "platform/files/FileCoordinator.h"
#include "platform/files/FileManager.h"
#include "platform/files/LockWait.h"
#include "platform/files/Path.h"
#include "platform/files/RegularFile.h"

namespace quillet::mailhost {

namespace {

namespace FileManager = platform::FileManager;
using platform::Path::appendingPathComponent;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBetweenTries{50};
constexpr std::chrono::hours kLifetime{24 * 7};

platform::Error foreign(const std::string& path) {
    return {"POSIX", EACCES, path + " is in no staging folder"};
}

// The copy of the file at `path`, which is resolved again while it is open: whoever shares may have
// put a link there meanwhile.
platform::Result<std::string> copyOf(const std::string& path,
                                     const std::string& dataFolder,
                                     const std::string& folder) {
    const auto named = stagedFile(dataFolder, path);
    if (!named) {
        return foreign(path);
    }
    const auto opened = platform::openRegularFile(named->path);
    if (!opened) {
        return opened.error();
    }
    const std::string open = "/proc/self/fd/" + std::to_string(opened.value().file.get());
    if (!stagedFile(dataFolder, open)) {
        return foreign(path);
    }
    const std::string copy =
        RequestUtils::GetGoodPath(platform::Path::lastPathComponent(path), folder).value();
    if (auto error = FileManager::copyFile(open, copy)) {
        return *error;
    }
    return copy;
}

// Tries for the lock until `end`.
platform::Result<std::string> takeFile(const std::string& path,
                                       const std::string& dataFolder,
                                       const std::string& folder,
                                       Clock::time_point end) {
    const auto named = stagedFile(dataFolder, path);
    if (!named) {
        return foreign(path);
    }
    if (!FileManager::folderExists(named->folder)) {
        return platform::posixError(ENOENT, path);
    }
    const platform::FileCoordinator coordinator(dataFolder);
    platform::Result<std::string> taken = platform::posixError(EWOULDBLOCK, path);
    for (;;) {
        const auto error =
            coordinator.coordinateReadingIfFree(path, [&](const std::string& coordinated) {
                taken = copyOf(coordinated, dataFolder, folder);
            });
        if (!error) {
            return taken;
        }
        if (error->code != EWOULDBLOCK || Clock::now() >= end || platform::areLockWaitsEnded()) {
            return *error;
        }
        std::this_thread::sleep_for(kBetweenTries);
    }
}

}  // namespace

platform::Result<std::string> newDraftFolder(const std::string& drafts) {
    if (auto error = FileManager::createFolder(drafts)) {
        return *error;
    }
    std::string folder = appendingPathComponent(drafts, "draft-XXXXXX");
    if (::mkdtemp(folder.data()) == nullptr) {
        return platform::posixError(errno, drafts);
    }
    return folder;
}

TakenFiles takeDraftFiles(const std::vector<std::string>& paths,
                          const std::string& dataFolder,
                          const std::string& folder,
                          std::chrono::milliseconds patience) {
    const Clock::time_point end = Clock::now() + patience;
    TakenFiles taken;
    for (const std::string& path : paths) {
        auto copy = takeFile(path, dataFolder, folder, end);
        if (copy) {
            taken.files.push_back(std::move(copy.value()));
        } else {
            platform::Log::write("MailHost a draft's file is left out: %@", {copy.error().text});
            taken.leftOut.push_back(path);
        }
    }
    return taken;
}

void removeOldDrafts(const std::string& drafts) {
    const auto names = FileManager::contentsOfFolder(drafts);
    const std::time_t oldest = std::time(nullptr) - std::chrono::seconds(kLifetime).count();
    for (const std::string& name : names ? names.value() : std::vector<std::string>()) {
        const std::string folder = appendingPathComponent(drafts, name);
        struct stat found {};
        if (::lstat(folder.c_str(), &found) == 0 && found.st_mtime < oldest) {
            FileManager::removeItem(folder);
        }
    }
}

}  // namespace quillet::mailhost
