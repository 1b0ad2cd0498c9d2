#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

#include "mailhost/maildir/MaildirName.h"
#include "mailhost/maildir/MessageCopy.h"
#include "mailhost/maildir/MessageFiles.h"
#include "mailhost/maildir/Mover.h"

#include "platform/base/Log.h"
#include "platform/base/StandardError.h"

namespace quillet::mailhost {

using platform::Log;
using platform::Result;

namespace {

// Where the two files of a move are now; empty: not there.
struct Findings {
    std::string source;
    std::string target;
};

struct Places {
    MessagePath source;
    MessagePath target;
};

// None if no mover has written this: nothing may be removed then.
std::optional<Places> placesOf(const Journal::Move& move) {
    const auto source = parseMessagePath(move.source);
    const auto target = parseMessagePath(move.target);
    if (!source || !target || source->part == "tmp" || target->part != "cur" ||
        isSameFolder(source->folder, target->folder)) {
        return std::nullopt;
    }
    const std::string temporary = target->folder + "/tmp/" + target->name;
    if (!move.temporary.empty() && move.temporary != temporary) {
        return std::nullopt;
    }
    return Places{*source, *target};
}

bool isSameFile(const std::string& one, const std::string& other) {
    struct stat first {};
    struct stat second {};
    return ::lstat(one.c_str(), &first) == 0 && ::lstat(other.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

// The message under its old name, else by its base: flags and the fields of synchronising programs
// may have changed since. An error if the folder cannot be listed.
Result<std::string> locate(const MessagePath& message) {
    std::string path = message.partFolder() + "/" + message.name;
    if (isRegularFile(path)) {
        return path;
    }
    const auto found = findMessage(message.folder, stableBaseOfFile(message.name));
    if (!found) {
        return found.error();
    }
    return found.value().value_or("");
}

Result<Findings> look(const Places& places) {
    auto source = locate(places.source);
    if (!source) {
        return source.error();
    }
    auto target = locate(places.target);
    if (!target) {
        return target.error();
    }
    return Findings{source.value(), target.value()};
}

// Whether the source is a second copy of what has arrived. A move within a file system never makes
// one, but for a moment a second name of the same file.
Result<bool> isDoubled(const Journal::Move& move, const Findings& found) {
    if (isSameFile(found.source, found.target)) {
        return true;
    }
    return move.temporary.empty() ? Result<bool>(false)
                                  : haveSameContents(found.source, found.target);
}

std::string_view flagsOf(std::string_view path) {
    return parseMaildirName(path.substr(path.rfind('/') + 1)).flags;
}

// Takes away the source of a message that has arrived. Returns what to say.
Result<std::string> finish(const Journal::Move& move, const Findings& found) {
    const auto isSame = isDoubled(move, found);
    if (!isSame) {
        return isSame.error();
    }
    if (!isSame.value()) {
        return found.source + " and " + found.target + " differ: both messages stay";
    }
    if (auto error = syncFolder(found.target.substr(0, found.target.rfind('/')))) {
        return *error;
    }
    const std::string sourceName = found.source.substr(found.source.rfind('/') + 1);
    // Flags that the source got since the move began, and the target did not.
    if (found.source != move.source && flagsOf(found.target) == flagsOf(move.target)) {
        withFlagsOf(found.target, sourceName);
    }
    if (::unlink(found.source.c_str()) != 0) {
        return platform::posixError(errno, found.source);
    }
    return "finished the move of " + found.source + " to " + found.target;
}

// Returns what to say; an error if the move has to stay open.
Result<std::string> close(const Journal::Move& move) {
    const auto places = placesOf(move);
    if (!places) {
        return std::string("left out a line of the journal that names no messages");
    }
    const auto found = look(*places);
    if (!found) {
        return found.error();
    }
    const Findings& files = found.value();
    if (!move.temporary.empty() && isRegularFile(move.temporary)) {
        ::unlink(move.temporary.c_str());
    }
    if (!files.source.empty() && !files.target.empty()) {
        return finish(move, files);
    }
    if (!files.source.empty()) {
        return "dropped a move: the message is still at " + files.source;
    }
    if (!files.target.empty()) {
        return "found the message of a move at " + files.target;
    }
    return "found the message neither at " + move.source + " nor at " + move.target +
           ": another program has moved it on or removed it";
}

}  // namespace

void Mover::recover() {
    const std::vector<Journal::Move> moves = journal_.openMoves();
    for (const Journal::Move& move : moves) {
        const auto closed = close(move);
        if (!closed) {
            Log::write("MailHost recover cannot look after the move of %@ yet: %@",
                       {move.source, closed.error().text});
            continue;
        }
        Log::write("MailHost recover %@", {closed.value()});
        if (const auto places = placesOf(move)) {
            syncFolder(places->target.partFolder());
            syncFolder(places->source.partFolder());
        }
        end(move);
    }
}

}  // namespace quillet::mailhost
