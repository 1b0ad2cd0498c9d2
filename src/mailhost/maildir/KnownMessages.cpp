#include "mailhost/maildir/KnownMessages.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <utility>

#include "mailhost/maildir/MaildirName.h"

#include "platform/files/FileDescriptor.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::mailhost {

namespace {

constexpr std::uint8_t kListingsToMiss = 2;

std::string stableBaseOfName(std::string_view fileName) {
    return stableBase(parseMaildirName(fileName).base);
}

// Orders by hash, and by the text where hashes are equal, so that no choice of names makes two
// messages one.
int compareBases(const KnownMessage& one,
                 const std::string& names,
                 const KnownMessage& other,
                 const std::string& otherNames) {
    const auto nameOf = [](const KnownMessage& message, const std::string& text) {
        return std::string_view(text).substr(message.at, message.length);
    };
    if (one.hash != other.hash) {
        return one.hash < other.hash ? -1 : 1;
    }
    const std::string_view name = nameOf(one, names);
    const std::string_view otherName = nameOf(other, otherNames);
    return name == otherName ? 0 : stableBaseOfName(name).compare(stableBaseOfName(otherName));
}

void setFactsOfName(KnownMessage& message, std::string_view fileName) {
    const MaildirName name = parseMaildirName(fileName);
    message.nameTime = timeOf(name.base);
    message.uid = uidOf(name.base);
    message.isSeen = name.has('S');
    message.isFlagged = name.has('F');
    message.isHidden = name.has('T') || name.has('D');
}

// What stays true of `listed` since it was known as `before`.
void takeOver(const KnownMessage& before, KnownMessage& listed) {
    listed.modified = before.modified;
    listed.date = before.date;
}

platform::FileDescriptor openSubfolder(const std::string& folder, bool isNew) {
    const std::string path = folder + "/" + fileInFolder(isNew, "");
    return platform::FileDescriptor(platform::uninterrupted(
        [&] { return ::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); }));
}

}  // namespace

std::vector<KnownMessage> KnownMessages::takeApart(const FolderListing& listing) {
    std::vector<KnownMessage> listed;
    listed.reserve(listing.files.size());
    for (const FolderListing::File& file : listing.files) {
        KnownMessage message;
        message.hash = std::hash<std::string>()(stableBaseOfName(listing.nameOf(file)));
        message.at = file.at;
        message.length = file.length;
        message.isInNew = file.isInNew;
        listed.push_back(message);
    }
    const auto compare = [&](const KnownMessage& one, const KnownMessage& other) {
        return compareBases(one, listing.names, other, listing.names);
    };
    // Those that count come first: "cur" was listed after "new".
    std::sort(listed.begin(), listed.end(), [&](const auto& one, const auto& other) {
        const int order = compare(one, other);
        return order < 0 || (order == 0 && one.at > other.at);
    });
    const auto isSame = [&](const auto& one, const auto& other) {
        return compare(one, other) == 0;
    };
    listed.erase(std::unique(listed.begin(), listed.end(), isSame), listed.end());
    return listed;
}

void KnownMessages::merge(FolderListing listing) {
    std::vector<KnownMessage> listed = takeApart(listing);
    listing.files = {};
    std::vector<KnownMessage> merged;
    merged.reserve(listed.size());
    auto before = messages_.begin();
    const auto keepMissing = [&] {
        KnownMessage missing = *before++;
        missing.missedListings =
            static_cast<std::uint8_t>(missing.missedListings + (listing.isSettled ? 1 : 0));
        if (missing.missedListings < kListingsToMiss) {
            const std::string_view name = nameOf(missing);
            missing.at = static_cast<std::uint32_t>(listing.names.size());
            missing.isListed = false;
            listing.names.append(name);
            merged.push_back(missing);
        }
    };
    for (KnownMessage& message : listed) {
        int order = -1;
        while (before != messages_.end() &&
               (order = compareBases(*before, names_, message, listing.names)) < 0) {
            keepMissing();
        }
        setFactsOfName(message, std::string_view(listing.names).substr(message.at, message.length));
        if (before != messages_.end() && order == 0) {
            takeOver(*before++, message);
        }
        merged.push_back(message);
    }
    while (before != messages_.end()) {
        keepMissing();
    }
    messages_ = std::move(merged);
    names_ = std::move(listing.names);
}

void KnownMessages::readTimes(const std::string& folder) {
    std::array<platform::FileDescriptor, 2> folders;
    for (KnownMessage& message : messages_) {
        if (message.modified != KnownMessage::kUnread || !message.isListed) {
            continue;
        }
        platform::FileDescriptor& file = folders[message.isInNew ? 1 : 0];
        if (!file) {
            file = openSubfolder(folder, message.isInNew);
        }
        struct stat found {};
        const std::string name(nameOf(message));
        if (::fstatat(file.get(), name.c_str(), &found, AT_SYMLINK_NOFOLLOW) == 0) {
            message.modified = found.st_mtim.tv_sec;
        } else {
            message.isVanished = errno == ENOENT;
        }
    }
}

std::string KnownMessages::stableBaseOf(const KnownMessage& message) const {
    return stableBaseOfName(nameOf(message));
}

KnownMessage* KnownMessages::find(std::string_view stableBase) {
    const std::uint64_t hash = std::hash<std::string_view>()(stableBase);
    auto message = std::lower_bound(
        messages_.begin(), messages_.end(), hash, [](const KnownMessage& one, std::uint64_t other) {
            return one.hash < other;
        });
    for (; message != messages_.end() && message->hash == hash; ++message) {
        if (stableBaseOf(*message) == stableBase) {
            return &*message;
        }
    }
    return nullptr;
}

bool KnownMessages::isAnyMissing() const {
    return std::any_of(messages_.begin(), messages_.end(), [](const KnownMessage& message) {
        return !message.isListed || message.isVanished;
    });
}

}  // namespace quillet::mailhost
