#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "mailhost/maildir/FolderListing.h"

namespace quillet::mailhost {

// What is remembered of a message: little, since a folder may have hundreds of thousands.
struct KnownMessage {
    static constexpr std::int64_t kUnread = std::numeric_limits<std::int64_t>::min();
    static constexpr std::int64_t kNone = kUnread + 1;

    std::uint64_t hash = 0;           // of the stable base
    std::uint64_t nameTime = 0;       // see timeOf()
    std::uint64_t uid = 0;            // see uidOf()
    std::uint64_t identifier = 0;     // its first 64 bits; 0: not asked for yet
    std::int64_t modified = kUnread;  // seconds since 1970, or kUnread
    std::int64_t date = kUnread;      // of the header: seconds since 1970, kUnread or kNone
    std::uint32_t at = 0;             // of the name
    std::uint32_t length = 0;         // of the name
    bool isInNew = false;
    bool isSeen = false;
    bool isFlagged = false;
    bool isHidden = false;            // a draft, or deleted
    bool isListed = true;             // in the last listing
    bool isVanished = false;          // its file could not be found since the last listing
    std::uint8_t missedListings = 0;  // settled ones
};

// All messages of a folder, found again in each listing by their stable base. One thread at a time.
class KnownMessages {
public:
    // Takes over what was listed. A message that is not listed stays until it is missing from two
    // settled listings. If a message is listed twice, as a rename beside the listing causes it, the
    // file in "cur" counts, and of two of them the later one.
    void merge(FolderListing listing);

    // Asks the system for the times of the files that are new. Marks those that are not there.
    void readTimes(const std::string& folder);

    std::vector<KnownMessage>& all() { return messages_; }
    std::string_view nameOf(const KnownMessage& message) const {
        return std::string_view(names_).substr(message.at, message.length);
    }
    // "cur/NAME" or "new/NAME".
    std::string fileOf(const KnownMessage& message) const {
        return fileInFolder(message.isInNew, nameOf(message));
    }
    std::string stableBaseOf(const KnownMessage& message) const;

    // The message with that stable base; null: none. Valid until the next merge().
    KnownMessage* find(std::string_view stableBase);
    // The message with that identifier (see isIdentifier()); null: none. The first call takes some
    // 0.1 s for 100,000 messages.
    KnownMessage* findIdentifier(std::string_view identifier);

    // Takes one of all() out.
    void forget(const KnownMessage& message) {
        messages_.erase(messages_.begin() + (&message - messages_.data()));
    }

    // Whether a message is not where the last listing said, or is missing there.
    bool isAnyMissing() const;

private:
    // The messages of a listing in the order of messages_, each of them once.
    static std::vector<KnownMessage> takeApart(const FolderListing& listing);
    // Adds those of `missing` that stay to `listed`, and their names to the listing.
    void keepMissing(std::vector<KnownMessage> missing,
                     FolderListing& listing,
                     std::vector<KnownMessage>& listed) const;

    std::string names_;
    std::vector<KnownMessage> messages_;  // in the order of their hashes, then of their bases
};

}  // namespace quillet::mailhost
