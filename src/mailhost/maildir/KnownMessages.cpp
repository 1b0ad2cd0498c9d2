#include "mailhost/maildir/KnownMessages.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <functional>
#include <utility>

#include "mailhost/maildir/MaildirName.h"
#include "mailhost/maildir/MessageFiles.h"

#include "platform/files/FileDescriptor.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::mailhost {

namespace {

constexpr std::uint8_t kListingsToMiss = 2;

// The first 64 bits of an identifier, never 0.
std::uint64_t startOfIdentifier(std::string_view identifier) {
    constexpr int kHexadecimal = 16;
    const std::string_view digits = identifier.substr(1, 16);
    std::uint64_t bits = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), bits, kHexadecimal);
    return bits == 0 ? 1 : bits;
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
    return name == otherName ? 0 : stableBaseOfFile(name).compare(stableBaseOfFile(otherName));
}

void setFactsOfName(KnownMessage& message, std::string_view fileName) {
    const MaildirName name = parseMaildirName(fileName);
    message.nameTime = timeOf(name.base);
    message.uid = uidOf(name.base);
    message.isSeen = name.has('S');
    message.isFlagged = name.has('F');
    message.isHidden = name.has('T') || name.has('D');
}

// What is known of a listed message that was known as `before`, under the name `nameBefore`.
void takeOver(const KnownMessage& before,
              std::string_view nameBefore,
              KnownMessage& listed,
              std::string_view name) {
    if (nameBefore != name) {
        listed.modified = before.modified;
        listed.date = before.date;
        listed.identifier = before.identifier;
        setFactsOfName(listed, name);
        return;
    }
    KnownMessage same = before;
    same.at = listed.at;
    same.isInNew = listed.isInNew;
    same.isListed = true;
    same.isVanished = false;
    same.missedListings = 0;
    listed = same;
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
        message.hash = std::hash<std::string>()(stableBaseOfFile(listing.nameOf(file)));
        message.at = file.at;
        message.length = file.length;
        message.isInNew = file.isInNew;
        listed.push_back(message);
    }
    const auto compare = [&](const KnownMessage& one, const KnownMessage& other) {
        return compareBases(one, listing.names, other, listing.names);
    };
    // Of equal ones the later is kept: "cur" was listed after "new".
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
    std::vector<KnownMessage> missing;
    auto before = messages_.begin();
    for (KnownMessage& message : listed) {
        int order = -1;
        while (before != messages_.end() &&
               (order = compareBases(*before, names_, message, listing.names)) < 0) {
            missing.push_back(*before++);
        }
        const std::string_view name =
            std::string_view(listing.names).substr(message.at, message.length);
        if (before != messages_.end() && order == 0) {
            takeOver(*before, nameOf(*before), message, name);
            ++before;
        } else {
            setFactsOfName(message, name);
        }
    }
    missing.insert(missing.end(), before, messages_.end());
    keepMissing(std::move(missing), listing, listed);
    messages_ = std::move(listed);
    names_ = std::move(listing.names);
}

void KnownMessages::keepMissing(std::vector<KnownMessage> missing,
                                FolderListing& listing,
                                std::vector<KnownMessage>& listed) const {
    const auto middle = static_cast<std::ptrdiff_t>(listed.size());
    for (KnownMessage& message : missing) {
        message.missedListings =
            static_cast<std::uint8_t>(message.missedListings + (listing.isSettled ? 1 : 0));
        if (message.missedListings < kListingsToMiss) {
            const std::string_view name = nameOf(message);
            message.at = static_cast<std::uint32_t>(listing.names.size());
            message.isListed = false;
            listing.names.append(name);
            listed.push_back(message);
        }
    }
    std::inplace_merge(listed.begin(),
                       listed.begin() + middle,
                       listed.end(),
                       [&](const KnownMessage& one, const KnownMessage& other) {
                           return compareBases(one, listing.names, other, listing.names) < 0;
                       });
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
    return stableBaseOfFile(nameOf(message));
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

KnownMessage* KnownMessages::findIdentifier(std::string_view identifier) {
    const std::uint64_t start = startOfIdentifier(identifier);
    for (KnownMessage& message : messages_) {
        if (message.identifier == 0) {
            message.identifier = startOfIdentifier(identifierOf(stableBaseOf(message)));
        }
        if (message.identifier == start && identifierOf(stableBaseOf(message)) == identifier) {
            return &message;
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
