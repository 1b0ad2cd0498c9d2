#include "mailhost/accounts/MbsyncConfiguration.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>

#include "mailhost/accounts/FolderLayout.h"
#include "mailhost/accounts/HomePath.h"

#include "platform/base/Ascii.h"

namespace quillet::mailhost {

namespace {

using platform::equalsIgnoringAsciiCase;

constexpr std::string_view kBlanks = " \t\r\v\f";

// Takes a word from the start of a line. Quotes join blanks, a backslash takes the next character
// as it is. None at the end of the line or at a comment.
std::optional<std::string> takeWord(std::string_view& line) {
    line = platform::trimmedStart(line, kBlanks);
    if (line.empty() || line.front() == '#') {
        return std::nullopt;
    }
    std::string word;
    bool isQuoted = false;
    std::size_t at = 0;
    for (; at < line.size(); ++at) {
        if (line[at] == '"') {
            isQuoted = !isQuoted;
        } else if (!isQuoted && kBlanks.find(line[at]) != std::string_view::npos) {
            break;
        } else {
            at += line[at] == '\\' && at + 1 < line.size() ? 1 : 0;
            word += line[at];
        }
    }
    line.remove_prefix(at);
    return word;
}

struct ImapStore {
    std::string account;
    std::string user;
};

struct MaildirStore {
    std::string path;
    std::string inbox;
    Layout layout = Layout::Auto;
};

// A side of a channel, ":store:mailbox".
struct ChannelSide {
    std::string store;
    std::string mailbox;
};

struct Channel {
    std::vector<ChannelSide> sides;
    bool hasPatterns = false;
};

// The stores of a channel between a server and a Maildir.
struct Tie {
    const ImapStore* imap = nullptr;
    const MaildirStore* maildir = nullptr;
    std::string_view farMailbox;
    std::string_view nearMailbox;
};

class MbsyncReader {
public:
    explicit MbsyncReader(const std::string& home) : home_(home) {}

    void readLine(std::string_view line);
    std::vector<MbsyncAccount> accounts() const;

private:
    enum class Section { None, Account, ImapStore, MaildirStore, Channel };

    bool beginSection(std::string_view key, const std::string& name);
    void readSetting(std::string_view key, const std::string& value);
    void readMaildirSetting(std::string_view key, const std::string& value);
    void readChannelSetting(std::string_view key, const std::string& value);
    std::string pathOf(std::string_view text) const;
    std::string userOf(const ImapStore& store) const;
    std::optional<Tie> tieOf(const Channel& channel) const;
    MbsyncAccount accountOf(const Tie& tie, bool hasPatterns) const;
    static std::string mappedInbox(const Tie& tie, const MbsyncAccount& account);

    const std::string& home_;
    Section section_ = Section::None;
    std::string name_;                          // of the section
    std::map<std::string, std::string> users_;  // of the accounts
    std::map<std::string, ImapStore> imapStores_;
    std::map<std::string, MaildirStore> maildirStores_;
    std::vector<Channel> channels_;
};

void MbsyncReader::readLine(std::string_view line) {
    const bool isEmpty = line.find_first_not_of(kBlanks) == std::string_view::npos;
    const std::optional<std::string> key = takeWord(line);
    if (!key) {
        // A line with a comment only does not end the section.
        section_ = isEmpty ? Section::None : section_;
        return;
    }
    const std::optional<std::string> value = takeWord(line);
    if (value && !beginSection(*key, *value)) {
        readSetting(*key, *value);
    }
}

bool MbsyncReader::beginSection(std::string_view key, const std::string& name) {
    const std::array<std::pair<std::string_view, Section>, 5> kinds{
        {{"IMAPAccount", Section::Account},
         {"IMAPStore", Section::ImapStore},
         {"MaildirStore", Section::MaildirStore},
         {"Channel", Section::Channel},
         {"Group", Section::None}}};
    const auto* const kind = std::find_if(kinds.begin(), kinds.end(), [key](const auto& one) {
        return equalsIgnoringAsciiCase(one.first, key);
    });
    if (kind == kinds.end()) {
        return false;
    }
    section_ = kind->second;
    name_ = name;
    if (section_ == Section::ImapStore) {
        imapStores_[name];
    } else if (section_ == Section::MaildirStore) {
        maildirStores_[name];
    } else if (section_ == Section::Channel) {
        channels_.emplace_back();
    }
    return true;
}

void MbsyncReader::readSetting(std::string_view key, const std::string& value) {
    const bool isUser = equalsIgnoringAsciiCase(key, "User");
    switch (section_) {
        case Section::Account:
            if (isUser) {
                users_[name_] = value;
            }
            break;
        case Section::ImapStore:
            if (isUser) {
                imapStores_[name_].user = value;
            } else if (equalsIgnoringAsciiCase(key, "Account")) {
                imapStores_[name_].account = value;
            }
            break;
        case Section::MaildirStore:
            readMaildirSetting(key, value);
            break;
        case Section::Channel:
            readChannelSetting(key, value);
            break;
        case Section::None:
            break;
    }
}

void MbsyncReader::readMaildirSetting(std::string_view key, const std::string& value) {
    MaildirStore& store = maildirStores_[name_];
    if (equalsIgnoringAsciiCase(key, "Path")) {
        store.path = pathOf(value);
    } else if (equalsIgnoringAsciiCase(key, "Inbox")) {
        store.inbox = pathOf(value);
    } else if (equalsIgnoringAsciiCase(key, "SubFolders")) {
        store.layout = equalsIgnoringAsciiCase(value, "Maildir++") ? Layout::MaildirPlusPlus
                       : equalsIgnoringAsciiCase(value, "Legacy")  ? Layout::Legacy
                                                                   : Layout::Verbatim;
    }
}

void MbsyncReader::readChannelSetting(std::string_view key, const std::string& value) {
    constexpr std::array<std::string_view, 4> kSides{"Far", "Near", "Master", "Slave"};
    Channel& channel = channels_.back();
    if (std::any_of(kSides.begin(), kSides.end(), [key](std::string_view side) {
            return equalsIgnoringAsciiCase(side, key);
        })) {
        const std::size_t end = value.find(':', 1);
        if (value.starts_with(':') && end != std::string::npos) {
            channel.sides.push_back({value.substr(1, end - 1), value.substr(end + 1)});
        }
    } else if (equalsIgnoringAsciiCase(key, "Pattern") ||
               equalsIgnoringAsciiCase(key, "Patterns")) {
        channel.hasPatterns = true;
    }
}

std::string MbsyncReader::pathOf(std::string_view text) const {
    return absolutePath(text, home_).value_or(*absolutePath("~/" + std::string(text), home_));
}

std::string MbsyncReader::userOf(const ImapStore& store) const {
    const auto user = users_.find(store.account);
    return store.user.empty() && user != users_.end() ? user->second : store.user;
}

std::optional<Tie> MbsyncReader::tieOf(const Channel& channel) const {
    Tie tie;
    for (const ChannelSide& side : channel.sides) {
        if (const auto imap = imapStores_.find(side.store); imap != imapStores_.end()) {
            tie.imap = &imap->second;
            tie.farMailbox = side.mailbox;
        } else if (const auto found = maildirStores_.find(side.store);
                   found != maildirStores_.end()) {
            tie.maildir = &found->second;
            tie.nearMailbox = side.mailbox;
        }
    }
    return tie.imap != nullptr && tie.maildir != nullptr ? std::optional(tie) : std::nullopt;
}

MbsyncAccount MbsyncReader::accountOf(const Tie& tie, bool hasPatterns) const {
    const MaildirStore& store = *tie.maildir;
    const std::string inbox = store.inbox.empty() ? pathOf("Maildir") : store.inbox;
    MbsyncAccount account;
    account.user = userOf(*tie.imap);
    account.layout = store.layout;
    if (store.path.empty() || store.layout == Layout::MaildirPlusPlus) {
        account.maildir = inbox;
    } else if (hasPatterns && tie.nearMailbox.ends_with('/')) {
        // All folders of the channel, the Inbox too, lie below this one.
        account.maildir = pathOf(store.path + "/" + std::string(tie.nearMailbox));
    } else {
        account.maildir = store.path;
        account.inbox = inbox;
    }
    return account;
}

// The path of another folder that the channel makes the Inbox; empty if there is none.
std::string MbsyncReader::mappedInbox(const Tie& tie, const MbsyncAccount& account) {
    const auto isInbox = [](std::string_view mailbox) {
        return mailbox.empty() || mailbox == "INBOX";
    };
    return isInbox(tie.farMailbox) && !isInbox(tie.nearMailbox)
               ? folderPath(account.maildir, tie.nearMailbox, account.layout)
               : std::string();
}

std::vector<MbsyncAccount> MbsyncReader::accounts() const {
    std::vector<MbsyncAccount> accounts;
    std::map<std::pair<std::string, std::string>, std::size_t> known;
    for (const Channel& channel : channels_) {
        const std::optional<Tie> tie = tieOf(channel);
        if (!tie) {
            continue;
        }
        MbsyncAccount account = accountOf(*tie, channel.hasPatterns);
        const std::string inbox = channel.hasPatterns ? std::string() : mappedInbox(*tie, account);
        const auto [entry, isNew] =
            known.try_emplace({account.maildir, account.user}, accounts.size());
        if (isNew) {
            accounts.push_back(std::move(account));
        }
        if (!inbox.empty()) {
            accounts[entry->second].inbox = inbox;
        }
    }
    return accounts;
}

}  // namespace

std::vector<MbsyncAccount> readMbsyncConfiguration(std::string_view text, const std::string& home) {
    MbsyncReader reader(home);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        reader.readLine(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return reader.accounts();
}

}  // namespace quillet::mailhost
