#include "mailhost/maildir/Mover.h"

#include <cerrno>
#include <chrono>
#include <sys/stat.h>
#include <thread>
#include <utility>

#include "mailhost/maildir/FaultPoint.h"
#include "mailhost/maildir/MessageCopy.h"
#include "mailhost/maildir/MessageFiles.h"
#include "mailhost/maildir/NewName.h"

#include "platform/base/Log.h"
#include "platform/base/StandardError.h"
#include "platform/files/FileManager.h"

namespace quillet::mailhost {

using platform::Error;
using platform::Log;
using platform::posixError;
using platform::printableLine;
using platform::Result;

namespace {

constexpr int kAttempts = 6;  // the first, and one after each of five searches
constexpr std::chrono::milliseconds kBetweenAttempts{50};

// The journal and the disk tell the place of trouble by a path; people want to know what happened
// to the message.
Error notMoved(const Error& error, const std::string& targetFolder) {
    return {error.domain,
            error.code,
            printableLine("The message was not moved to " + targetFolder + ": " + error.text)};
}

Error gone(const std::string& folder) {
    return {"POSIX",
            ENOENT,
            printableLine("The message is no longer in " + folder +
                          ": another program has moved or removed it")};
}

std::optional<Error> whyNoMessage(const std::string& path) {
    struct stat found {};
    if (::lstat(path.c_str(), &found) != 0) {
        return posixError(errno, path);
    }
    return S_ISREG(found.st_mode) ? std::nullopt : std::optional(posixError(EINVAL, path));
}

void logFailedSync(const std::optional<Error>& error) {
    if (error) {
        Log::write("MailHost move is not certain to be on the disk yet: %@", {error->text});
    }
}

}  // namespace

Mover::Mover(Journal& journal, std::function<bool()> shallEnd)
    : journal_(journal), shallEnd_(std::move(shallEnd)) {}

void Mover::end(const Journal::Move& move) {
    if (const auto error = journal_.end(move)) {
        Log::write("MailHost move stays in the journal: %@", {error->text});
    }
}

Result<std::string> Mover::move(const std::string& identifier,
                                const std::string& sourceFolder,
                                const std::string& file,
                                const std::string& targetFolder) {
    if (auto error = whyNotMovable(sourceFolder, file, targetFolder)) {
        return *error;
    }
    std::string path = sourceFolder + "/" + file;
    for (int attempt = 1;; ++attempt) {
        auto moved = moveFile(identifier, path, targetFolder);
        if (moved) {
            return moved;
        }
        const bool isGone = moved.error().code == ENOENT;
        if (isGone && attempt == kAttempts) {
            // Unless it is the target that has gone.
            return whyNotMovable(sourceFolder, file, targetFolder).value_or(gone(sourceFolder));
        }
        if ((!isGone && moved.error().code != EEXIST) || attempt == kAttempts) {
            return notMoved(moved.error(), targetFolder);
        }
        if (attempt > 1) {
            std::this_thread::sleep_for(kBetweenAttempts);
        }
        const std::string found = currentPath(path);
        path = found.empty() ? path : found;
    }
}

Result<std::string> Mover::moveFile(const std::string& identifier,
                                    const std::string& path,
                                    const std::string& targetFolder) {
    if (auto error = whyNoMessage(path)) {
        return *error;
    }
    const std::string name = newNameFor(std::string_view(path).substr(path.rfind('/') + 1));
    const Journal::Move move{identifier, path, targetFolder + "/cur/" + name, {}};
    if (auto error = journal_.begin(move)) {
        return *error;
    }
    faultPoint("journal");
    const int code = moveWithoutReplacing(move.source, move.target);
    if (code == 0) {
        faultPoint("rename");
        logFailedSync(syncFolder(targetFolder + "/cur"));
        logFailedSync(syncFolder(path.substr(0, path.rfind('/'))));
        faultPoint("sync");
    }
    end(move);
    if (code == EXDEV) {
        return moveAcross({identifier, path, move.target, targetFolder + "/tmp/" + name});
    }
    if (code != 0) {
        return posixError(code, path);
    }
    faultPoint("done");
    return move.target;
}

Result<std::string> Mover::moveAcross(const Journal::Move& move) {
    const std::string folder = move.temporary.substr(0, move.temporary.rfind('/'));
    if (auto error = platform::FileManager::createFolder(folder)) {
        return *error;
    }
    if (auto error = journal_.begin(move)) {
        return *error;
    }
    auto moved = moveByCopy(move, shallEnd_);
    if (moved) {
        logFailedSync(syncFolder(move.source.substr(0, move.source.rfind('/'))));
    }
    end(move);
    if (moved) {
        faultPoint("done");
    }
    return moved;
}

}  // namespace quillet::mailhost
