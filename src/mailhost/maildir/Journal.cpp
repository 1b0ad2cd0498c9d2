#include "mailhost/maildir/Journal.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "mailhost/maildir/JournalLine.h"
#include "mailhost/maildir/MessageFiles.h"

#include "platform/base/ByteBuffer.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileManager.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::mailhost {

using platform::ByteBuffer;
using platform::Error;
using platform::FileDescriptor;
using platform::posixError;
using platform::Result;

namespace {

constexpr std::size_t kLongestJournal = std::size_t{16} * 1024 * 1024;  // bytes
// A file in which nothing is open is emptied at this length.
constexpr std::size_t kLongJournal = std::size_t{64} * 1024;  // bytes
constexpr mode_t kPrivateMode = 0600;

constexpr const char* kBegin = "begin";
constexpr const char* kEnd = "end";
constexpr const char* kPending = "pending";
constexpr const char* kRan = "ran";

std::string beginLine(const Journal::Move& move) {
    return journalLine({kBegin, move.identifier, move.source, move.target, move.temporary});
}

Result<FileDescriptor> openJournalFile(const std::string& path) {
    FileDescriptor file(::open(path.c_str(),
                               O_RDWR | O_CREAT | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
                               kPrivateMode));
    struct stat found {};
    if (!file || ::fstat(file.get(), &found) != 0) {
        return posixError(errno, path);
    }
    if (!S_ISREG(found.st_mode)) {
        return posixError(EINVAL, path);
    }
    if ((found.st_mode & ALLPERMS) != kPrivateMode) {
        ::fchmod(file.get(), kPrivateMode);
    }
    return file;
}

}  // namespace

struct Journal::State {
    std::string path;
    FileDescriptor file;
    std::size_t length = 0;  // bytes, all of them whole lines
    std::vector<Move> moves;
    std::vector<std::string> accounts;
    bool isSpoilt = false;  // half a line could not be taken back

    // Takes the whole lines and returns their length.
    std::size_t read(std::string_view text);
    void apply(const std::vector<std::string>& fields);
    void close(std::string_view target);
    std::optional<Error> compact(std::string_view text);
    // `mustSync`: whether the line has to be on the disk when the call returns.
    std::optional<Error> append(const std::string& line, bool mustSync);
    void emptyIfNothingIsOpen();
};

std::size_t Journal::State::read(std::string_view text) {
    std::size_t start = 0;
    for (std::size_t end = 0; (end = text.find('\n', start)) != std::string_view::npos;
         start = end + 1) {
        apply(parseJournalLine(text.substr(start, end - start)));
    }
    return start;
}

void Journal::State::apply(const std::vector<std::string>& fields) {
    if (fields.size() == 5 && fields[0] == kBegin) {
        close(fields[3]);
        moves.push_back({fields[1], fields[2], fields[3], fields[4]});
    } else if (fields.size() == 2 && fields[0] == kEnd) {
        close(fields[1]);
    } else if (fields.size() == 2 && (fields[0] == kPending || fields[0] == kRan)) {
        std::erase(accounts, fields[1]);
        if (fields[0] == kPending) {
            accounts.push_back(fields[1]);
        }
    }
}

// The target's name is new for every move, so it tells the moves apart.
void Journal::State::close(std::string_view target) {
    std::erase_if(moves, [target](const Move& move) { return move.target == target; });
}

// A full disk leaves the old file in place, which says the same.
std::optional<Error> Journal::State::compact(std::string_view text) {
    std::string needed;
    for (const Move& move : moves) {
        needed += beginLine(move);
    }
    for (const std::string& account : accounts) {
        needed += journalLine({kPending, account});
    }
    if (needed == text || platform::FileManager::writeFileAtomically(path, needed)) {
        return std::nullopt;
    }
    auto opened = openJournalFile(path);
    if (!opened) {
        return opened.error();
    }
    file = std::move(opened.value());
    length = needed.size();
    return std::nullopt;
}

std::optional<Error> Journal::State::append(const std::string& line, bool mustSync) {
    if (isSpoilt) {
        return posixError(EIO, path);
    }
    const ssize_t written =
        platform::uninterrupted([&] { return ::write(file.get(), line.data(), line.size()); });
    const int code = written < 0 ? errno : ENOSPC;
    const bool isWhole = written == static_cast<ssize_t>(line.size());
    if (isWhole &&
        (!mustSync || platform::uninterrupted([&] { return ::fdatasync(file.get()); }) == 0)) {
        length += line.size();
        return std::nullopt;
    }
    const Error error = posixError(isWhole ? errno : code, path);
    // Half a line would spoil the next one.
    isSpoilt = ::ftruncate(file.get(), static_cast<off_t>(length)) != 0;
    return error;
}

void Journal::State::emptyIfNothingIsOpen() {
    if (moves.empty() && accounts.empty() && length > kLongJournal &&
        ::ftruncate(file.get(), 0) == 0) {
        length = 0;
    }
}

Journal::Journal(std::unique_ptr<State> state) : state_(std::move(state)) {}
Journal::Journal(Journal&&) noexcept = default;
Journal::~Journal() = default;

Result<Journal> Journal::open(const std::string& path) {
    auto file = openJournalFile(path);
    if (!file) {
        return file.error();
    }
    ByteBuffer bytes;
    if (auto error = platform::FileManager::readFile(path, bytes, kLongestJournal)) {
        return *error;
    }
    auto state = std::make_unique<State>();
    state->path = path;
    state->file = std::move(file.value());
    state->length = state->read(bytes.view());
    if (state->length != bytes.size() &&
        ::ftruncate(state->file.get(), static_cast<off_t>(state->length)) != 0) {
        return posixError(errno, path);
    }
    if (auto error = state->compact(bytes.view().substr(0, state->length))) {
        return *error;
    }
    // The file may be new: its lines are worth nothing without its name.
    if (auto error = syncFolder(path.substr(0, path.rfind('/')))) {
        return *error;
    }
    return Journal(std::move(state));
}

const std::vector<Journal::Move>& Journal::openMoves() const {
    return state_->moves;
}

const std::vector<std::string>& Journal::pendingAccounts() const {
    return state_->accounts;
}

std::optional<Error> Journal::begin(const Move& move) {
    if (auto error = state_->append(beginLine(move), true)) {
        return error;
    }
    state_->moves.push_back(move);
    return std::nullopt;
}

// Needs no sync: without the line the next start looks at the disk again, and finds the same.
std::optional<Error> Journal::end(const Move& move) {
    auto error = state_->append(journalLine({kEnd, move.target}), false);
    state_->close(move.target);
    state_->emptyIfNothingIsOpen();
    return error;
}

std::optional<Error> Journal::setPending(const std::string& account, bool isPending) {
    const auto& accounts = state_->accounts;
    const bool wasPending = std::find(accounts.begin(), accounts.end(), account) != accounts.end();
    if (wasPending == isPending) {
        return std::nullopt;
    }
    const char* word = isPending ? kPending : kRan;
    // A command whose end is forgotten runs once more, which does no harm.
    auto error = state_->append(journalLine({word, account}), isPending);
    if (!error) {
        state_->apply({word, account});
        state_->emptyIfNothingIsOpen();
    }
    return error;
}

}  // namespace quillet::mailhost
