#include "mailhost/maildir/FolderReader.h"

#include <algorithm>
#include <cerrno>
#include <functional>
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

// Whether a file is no message any more. Of others that cannot be read a row without texts tells.
bool isGone(const platform::Error& error) {
    return error.code == ENOENT || error.code == ELOOP || error.code == EINVAL ||
           error.code == ENXIO;
}

}  // namespace

struct FolderReader::State {
    using Find = std::function<KnownMessage*()>;

    std::string path;
    KnownMessages messages;
    std::optional<FolderStamps> settledStamps;  // of the last listing, if it was settled
    bool isListingSettled = true;
    std::unordered_map<std::string, RowTexts> texts;  // by stable base
    unsigned reading = 0;

    std::string pathOf(const KnownMessage& message) const {
        return platform::Path::appendingPathComponent(path, messages.fileOf(message));
    }
    bool isSettled() const { return isListingSettled && !messages.isAnyMissing(); }
    std::optional<platform::Error> list(int mostListings);
    void readDate(KnownMessage& message) const;
    const RowTexts* textsOf(KnownMessage& message);
    void forgetOldTexts();
    KnownMessage* findIdentifier(std::string_view identifier);
    std::optional<std::string> search(const Find& find);
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

KnownMessage* FolderReader::State::findIdentifier(std::string_view identifier) {
    for (const auto& [base, row] : texts) {
        if (row.identifier == identifier) {
            return messages.find(base);
        }
    }
    std::vector<KnownMessage>& all = messages.all();
    const auto found = std::find_if(all.begin(), all.end(), [&](const KnownMessage& message) {
        return identifierOf(parseMaildirName(messages.nameOf(message)).base) == identifier;
    });
    return found == all.end() ? nullptr : &*found;
}

std::optional<std::string> FolderReader::State::search(const Find& find) {
    const KnownMessage* message = find();
    if (message != nullptr && isRegularFile(pathOf(*message))) {
        return messages.fileOf(*message);
    }
    int settled = 0;
    for (int i = 0; i < kMostSearches && settled < kSettledSearches; ++i) {
        if (list(kMostListings)) {
            return std::nullopt;
        }
        message = find();
        const bool isListed = message != nullptr && message->isListed;
        if (isListed && isRegularFile(pathOf(*message))) {
            return messages.fileOf(*message);
        }
        if (isListingSettled && !isListed) {
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

const std::string& FolderReader::path() const {
    return state_->path;
}

std::optional<platform::Error> FolderReader::refresh() {
    if (state_->settledStamps && state_->isSettled()) {
        const platform::Result<FolderStamps> stamps = stampsOf(state_->path);
        if (stamps && stamps.value() == *state_->settledStamps) {
            return std::nullopt;
        }
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

bool FolderReader::readAhead(std::chrono::milliseconds budget) {
    const auto end = std::chrono::steady_clock::now() + budget;
    std::vector<KnownMessage*> unread;
    for (KnownMessage& message : state_->messages.all()) {
        if (message.date == KnownMessage::kUnread && !message.isHidden && message.isListed &&
            !message.isVanished) {
            unread.push_back(&message);
        }
    }
    const auto isOlder = [](const KnownMessage* one, const KnownMessage* other) {
        return one->modified < other->modified;
    };
    std::make_heap(unread.begin(), unread.end(), isOlder);
    while (!unread.empty() && std::chrono::steady_clock::now() < end) {
        std::pop_heap(unread.begin(), unread.end(), isOlder);
        state_->readDate(*unread.back());
        unread.pop_back();
    }
    return !unread.empty();
}

std::optional<std::string> FolderReader::fileOf(std::string_view identifier) const {
    return state_->search([&] { return state_->findIdentifier(identifier); });
}

std::optional<std::string> FolderReader::fileWithBase(std::string_view stableBase) const {
    return state_->search([&] { return state_->messages.find(stableBase); });
}

void FolderReader::forget(std::string_view identifier) {
    if (const KnownMessage* const message = state_->findIdentifier(identifier)) {
        state_->texts.erase(state_->messages.stableBaseOf(*message));
        state_->messages.forget(*message);
    }
}

}  // namespace quillet::mailhost
