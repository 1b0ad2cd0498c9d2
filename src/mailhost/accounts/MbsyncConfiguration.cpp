#include "mailhost/accounts/MbsyncConfiguration.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <utility>

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
    std::string pathOf(const std::string& text) const;
    std::string userOf(const ImapStore& store) const;
    std::optional<MbsyncAccount> accountOf(const Channel& channel) const;

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

std::string MbsyncReader::pathOf(const std::string& text) const {
    return absolutePath(text, home_).value_or(*absolutePath("~/" + text, home_));
}

std::string MbsyncReader::userOf(const ImapStore& store) const {
    const auto user = users_.find(store.account);
    return store.user.empty() && user != users_.end() ? user->second : store.user;
}

std::optional<MbsyncAccount> MbsyncReader::accountOf(const Channel& channel) const {
    const ImapStore* imap = nullptr;
    const MaildirStore* maildir = nullptr;
    MbsyncAccount account;
    std::string mailbox;
    for (const ChannelSide& side : channel.sides) {
        if (const auto store = imapStores_.find(side.store); store != imapStores_.end()) {
            imap = &store->second;
        } else if (const auto found = maildirStores_.find(side.store);
                   found != maildirStores_.end()) {
            maildir = &found->second;
            account.store = side.store;
            mailbox = side.mailbox;
        }
    }
    if (imap == nullptr || maildir == nullptr) {
        return std::nullopt;
    }
    account.user = userOf(*imap);
    account.layout = maildir->layout;
    const bool isInboxRoot = maildir->path.empty() || maildir->layout == Layout::MaildirPlusPlus;
    const std::string inbox = maildir->inbox.empty() ? pathOf("Maildir") : maildir->inbox;
    account.maildir = isInboxRoot ? inbox : maildir->path;
    if (channel.hasPatterns && mailbox.ends_with('/') && !isInboxRoot) {
        // All folders of the channel, the Inbox too, lie below this one.
        account.maildir = *absolutePath(account.maildir + "/" + mailbox, home_);
    } else if (!isInboxRoot) {
        account.inbox = inbox;
    }
    return account;
}

std::vector<MbsyncAccount> MbsyncReader::accounts() const {
    std::vector<MbsyncAccount> accounts;
    std::set<std::string> maildirs;
    for (const Channel& channel : channels_) {
        std::optional<MbsyncAccount> account = accountOf(channel);
        if (account && maildirs.insert(account->maildir).second) {
            accounts.push_back(std::move(*account));
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
