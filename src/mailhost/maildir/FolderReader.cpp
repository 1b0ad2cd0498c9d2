#include "mailhost/maildir/FolderReader.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <utility>

#include "mailhost/maildir/Candidates.h"
#include "mailhost/maildir/FolderListing.h"
#include "mailhost/maildir/HeaderFile.h"
#include "mailhost/maildir/KnownMessages.h"
#include "mailhost/maildir/MaildirName.h"
#include "mailhost/maildir/MessageFiles.h"
#include "mailhost/maildir/MessageHeader.h"

#include "platform/files/Path.h"

namespace quillet::mailhost {

namespace {

// The texts of a message are forgotten when it has not been among the newest for so many readings.
constexpr unsigned kReadingsToForget = 16;
// How long a search goes on while the folder does not settle.
constexpr int kMostSearches = 10;
constexpr std::chrono::milliseconds kSearchPause{20};
constexpr int kSettledSearches = 2;

// Texts of a row, kept for messages that are or were among the newest.
struct RowTexts {
    std::string identifier;
    std::string subject;
    std::string from;
    bool isRead = false;  // false: the file could not be read, which may pass
    unsigned lastReading = 0;
};

// Whether a file is no message any more. Others that cannot be read have a row without texts.
bool isGone(const platform::Error& error) {
    return error.code == ENOENT || error.code == ELOOP || error.code == EINVAL ||
           error.code == ENXIO;
}

}  // namespace

struct FolderReader::State {
    std::string path;
    KnownMessages messages;
    std::optional<FolderStamps> settledStamps;  // of the last listing, if it was settled
    bool isListingSettled = true;
    std::unordered_map<std::string, RowTexts> texts;  // by stable base
    unsigned reading = 0;
    // Places in messages.all() of those whose dates are still to be read; none: not chosen since
    // messages changed.
    std::optional<std::vector<std::size_t>> ahead;

    std::string pathOf(const KnownMessage& message) const {
        return platform::Path::appendingPathComponent(path, messages.fileOf(message));
    }
    bool isSettled() const { return isListingSettled && !messages.isAnyMissing(); }
    std::optional<platform::Error> list(int mostListings);
    void readDate(KnownMessage& message) const;
    const RowTexts* textsOf(KnownMessage& message);
    void forgetOldTexts();
    // Whether the folder is as its last listing, a settled one, found it.
    bool isUnchanged() const;
    KnownMessage* findIdentifier(std::string_view identifier);
    std::optional<std::string> fileAt(const KnownMessage* message) const;
    std::optional<std::string> search(std::string_view identifier);
    void chooseAhead();
};

std::optional<platform::Error> FolderReader::State::list(int mostListings) {
    settledStamps.reset();
    platform::Result<FolderListing> listing = listMailFolder(path, mostListings);
    if (!listing) {
        return listing.error();
    }
    isListingSettled = listing.value().isSettled;
    if (isListingSettled) {
        settledStamps = listing.value().stamps;
    }
    messages.merge(std::move(listing.value()));
    ahead.reset();
    messages.readTimes(path);
    return std::nullopt;
}

void FolderReader::State::readDate(KnownMessage& message) const {
    const platform::Result<std::string> bytes = readHeaderBytes(pathOf(message));
    if (!bytes && isGone(bytes.error())) {
        message.isVanished = true;
        return;
    }
    message.date =
        bytes ? parseHeaderDate(bytes.value()).value_or(KnownMessage::kNone) : KnownMessage::kNone;
}

// Null if the message is gone and was not read before.
const RowTexts* FolderReader::State::textsOf(KnownMessage& message) {
    std::string base = messages.stableBaseOf(message);
    auto known = texts.find(base);
    if (known == texts.end()) {
        const platform::Result<std::string> bytes = readHeaderBytes(pathOf(message));
        if (!bytes && isGone(bytes.error())) {
            message.isVanished = true;
            return nullptr;
        }
        MessageHeader header = bytes ? parseHeader(bytes.value()) : MessageHeader();
        message.date = header.date.value_or(KnownMessage::kNone);
        RowTexts read{
            identifierOf(base), std::move(header.subject), std::move(header.from), bool(bytes)};
        known = texts.emplace(std::move(base), std::move(read)).first;
    }
    known->second.lastReading = reading;
    return &known->second;
}

void FolderReader::State::forgetOldTexts() {
    std::erase_if(texts, [this](const auto& entry) {
        return !entry.second.isRead || reading - entry.second.lastReading >= kReadingsToForget;
    });
}

// Rows come first: they need no search.
KnownMessage* FolderReader::State::findIdentifier(std::string_view identifier) {
    for (const auto& [base, row] : texts) {
        if (row.identifier == identifier) {
            return messages.find(base);
        }
    }
    return messages.findIdentifier(identifier);
}

bool FolderReader::State::isUnchanged() const {
    if (!settledStamps || !isSettled()) {
        return false;
    }
    const platform::Result<FolderStamps> stamps = stampsOf(path);
    return stamps && stamps.value() == *settledStamps;
}

// Where the file of a known message is; none if there is none, or not where it was listed.
std::optional<std::string> FolderReader::State::fileAt(const KnownMessage* message) const {
    if (message == nullptr || !isRegularFile(pathOf(*message))) {
        return std::nullopt;
    }
    return messages.fileOf(*message);
}

std::optional<std::string> FolderReader::State::search(std::string_view identifier) {
    const KnownMessage* message = findIdentifier(identifier);
    std::optional<std::string> file = fileAt(message);
    if (file || (message == nullptr && isUnchanged())) {
        return file;
    }
    int settled = 0;
    for (int i = 0; i < kMostSearches && settled < kSettledSearches; ++i) {
        if (list(kMostListings)) {
            return std::nullopt;
        }
        message = findIdentifier(identifier);
        file = fileAt(message);
        if (file) {
            return file;
        }
        if (isListingSettled && (message == nullptr || !message->isListed)) {
            ++settled;
        } else {
            std::this_thread::sleep_for(kSearchPause);
        }
    }
    return std::nullopt;
}

FolderReader::FolderReader(std::string path) : state_(std::make_unique<State>()) {
    state_->path = std::move(path);
}
FolderReader::~FolderReader() = default;
FolderReader::FolderReader(FolderReader&&) noexcept = default;

std::optional<platform::Error> FolderReader::refresh() {
    if (state_->isUnchanged()) {
        return std::nullopt;
    }
    // A folder that was changing all the time probably still is.
    return state_->list(state_->isListingSettled ? kMostListings : 1);
}

bool FolderReader::isUnsettled() const {
    return !state_->isSettled();
}

std::vector<MessageRow> FolderReader::newest(const RowFilter& filter, std::int64_t now) {
    State& state = *state_;
    std::vector<KnownMessage*> found = newestCandidates(state.messages.all(), filter, now);
    for (KnownMessage* message : found) {
        if (message->date == KnownMessage::kUnread) {
            state.readDate(*message);
        }
    }
    std::erase_if(
        found, [](const KnownMessage* message) { return message->date == KnownMessage::kUnread; });
    std::sort(found.begin(), found.end(), [&](const KnownMessage* one, const KnownMessage* other) {
        const auto key = [&](const KnownMessage* message) {
            return std::pair(shownDate(*message, now), message->nameTime);
        };
        return key(one) != key(other) ? key(one) > key(other)
                                      : state.messages.nameOf(*one) < state.messages.nameOf(*other);
    });
    ++state.reading;
    std::vector<MessageRow> rows;
    for (KnownMessage* message : found) {
        if (rows.size() == kNewestRows) {
            break;
        }
        if (const RowTexts* texts = state.textsOf(*message)) {
            rows.push_back({state.messages.fileOf(*message),
                            texts->identifier,
                            texts->subject,
                            texts->from,
                            shownDate(*message, now),
                            !message->isSeen});
        }
    }
    state.forgetOldTexts();
    return rows;
}

// The newest files last, so that they are read first.
void FolderReader::State::chooseAhead() {
    const std::vector<KnownMessage>& all = messages.all();
    ahead.emplace();
    for (std::size_t index = 0; index < all.size(); ++index) {
        const KnownMessage& message = all[index];
        if (message.date == KnownMessage::kUnread && !message.isHidden && message.isListed &&
            !message.isVanished) {
            ahead->push_back(index);
        }
    }
    std::sort(ahead->begin(), ahead->end(), [&all](std::size_t one, std::size_t other) {
        return all[one].modified < all[other].modified;
    });
}

bool FolderReader::readAhead(std::chrono::milliseconds budget) {
    if (!state_->ahead) {
        state_->chooseAhead();
    }
    // Choosing does not count: it may take longer than the budget in a large folder.
    const auto end = std::chrono::steady_clock::now() + budget;
    std::vector<std::size_t>& ahead = *state_->ahead;
    while (!ahead.empty() && std::chrono::steady_clock::now() < end) {
        KnownMessage& message = state_->messages.all()[ahead.back()];
        ahead.pop_back();
        if (message.date == KnownMessage::kUnread) {
            state_->readDate(message);
        }
    }
    return !ahead.empty();
}

std::optional<std::string> FolderReader::fileOf(std::string_view identifier) const {
    return state_->search(identifier);
}

void FolderReader::forget(std::string_view identifier) {
    if (const KnownMessage* const message = state_->findIdentifier(identifier)) {
        state_->texts.erase(state_->messages.stableBaseOf(*message));
        state_->messages.forget(*message);
        state_->ahead.reset();
    }
}

}  // namespace quillet::mailhost
