#include "mailhost/host/UndoList.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <optional>
#include <utility>

#include "mailhost/maildir/FolderReader.h"
#include "mailhost/maildir/MaildirName.h"
#include "mailhost/maildir/MessageFiles.h"

#include "platform/base/StandardError.h"
#include "platform/files/FileManager.h"

namespace quillet::mailhost {

namespace {

using platform::Error;
using platform::printableLine;

// Moves messages back. Lists a folder only if a message is not where it was put, and only once for
// all messages of a burst.
class BackMover {
public:
    explicit BackMover(Mover& mover) : mover_(mover) {}

    platform::Result<std::string> moveBack(const UndoList::Move& move) {
        const auto message = parseMessagePath(move.file);
        if (!message) {
            return Error{"POSIX", EINVAL, printableLine(move.file) + " is not a message"};
        }
        const std::string base = stableBaseOfFile(message->name);
        const auto file = platform::FileManager::fileExists(move.file)
                              ? std::optional(message->part + "/" + message->name)
                              : readerOf(message->folder).fileOf(identifierOf(base));
        if (!file) {
            return Error{"POSIX",
                         ENOENT,
                         printableLine("The message is no longer in " + message->folder +
                                       ": another program has moved or removed it")};
        }
        return mover_.move(identifierOf(base), message->folder, *file, move.sourceFolder);
    }

private:
    FolderReader& readerOf(const std::string& folder) {
        return readers_.try_emplace(folder, folder).first->second;
    }

    Mover& mover_;
    std::map<std::string, FolderReader> readers_;
};

}  // namespace

void UndoList::dropOld(Clock::time_point now) {
    while (!bursts_.empty() && now - bursts_.front().last > kOpen) {
        bursts_.pop_front();
    }
}

UndoList::Burst UndoList::add(Move move, Clock::time_point now) {
    dropOld(now);
    if (bursts_.empty() || bursts_.back().burst != lastBurst_ ||
        now - bursts_.back().last > kPause) {
        bursts_.push_back({++lastBurst_, now, {}});
    }
    bursts_.back().last = now;
    bursts_.back().moves.push_back(std::move(move));
    return lastBurst_;
}

std::vector<UndoList::Undone> UndoList::undo(
    Burst burst,
    Clock::time_point now,
    const std::function<void(const std::string& account)>& willMove) {
    dropOld(now);
    const auto found = std::find_if(
        bursts_.begin(), bursts_.end(), [burst](const Moves& each) { return each.burst == burst; });
    if (found == bursts_.end()) {
        return {};
    }
    const std::vector<Move> moves = std::move(found->moves);
    bursts_.erase(found);
    BackMover back(mover_);
    std::vector<Undone> undone;
    undone.reserve(moves.size());
    for (const Move& move : moves) {
        willMove(move.account);
        undone.push_back({move.account, back.moveBack(move)});
    }
    return undone;
}

}  // namespace quillet::mailhost
