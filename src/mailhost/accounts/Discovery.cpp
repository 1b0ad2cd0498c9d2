#include "mailhost/accounts/Discovery.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <set>
#include <utility>

#include "mailhost/accounts/AccountAddress.h"
#include "mailhost/accounts/AccountFolders.h"
#include "mailhost/accounts/FolderLayout.h"
#include "mailhost/accounts/FolderRoles.h"
#include "mailhost/accounts/HomePath.h"
#include "mailhost/accounts/MbsyncConfiguration.h"
#include "mailhost/accounts/MsmtpConfiguration.h"
#include "mailhost/accounts/NotmuchConfiguration.h"

#include "platform/base/Ascii.h"
#include "platform/base/ByteBuffer.h"
#include "platform/base/Utf8.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet::mailhost {

namespace {

using platform::Path::appendingPathComponent;

constexpr std::size_t kLongestFile = 1 << 20;

// Whether the configuration file can hold the text.
bool isOneLine(std::string_view text) {
    constexpr std::string_view kBreaks("\n\0", 2);
    return text.find_first_of(kBreaks) == std::string_view::npos &&
           !platform::firstInvalidUtf8(text);
}

// Where the mail of an account arrives: the Maildir itself, or its folder "Inbox". Empty: nowhere,
// so that it is no account.
std::string inboxOf(const std::string& maildir) {
    if (isMailFolder(maildir)) {
        return maildir;
    }
    for (const FolderEntry& entry : foldersIn(maildir)) {
        std::string path = appendingPathComponent(maildir, entry.name);
        if (platform::equalsIgnoringAsciiCase(entry.name, "inbox") && isMailFolder(path)) {
            return path;
        }
    }
    return {};
}

class AccountSearch {
public:
    explicit AccountSearch(const UserFolders& folders) : folders_(folders) {}

    void findMaildirs();
    void findAddresses(const std::function<std::string(const std::string& inbox)>& commonest);
    Discovery result();

private:
    std::string textOf(const std::string& path);
    NotmuchConfiguration notmuchConfiguration();
    std::string msmtpSender();
    void addMbsyncAccounts(const std::string& file);
    void addMbsyncAccount(const MbsyncAccount& mbsync);
    std::string mbsyncInbox(const MbsyncAccount& mbsync) const;
    void addMaildirsIn(const std::string& root);
    bool addMaildir(const std::string& maildir, Layout layout);
    void add(AccountConfiguration account, const std::string& inbox);
    bool isKnown(const std::string& maildir, const std::string& inbox) const;

    bool hasAddress(const std::string& address) const;
    bool giveAddress(AccountConfiguration& account, const std::string& address);
    void giveSender();
    std::string unknownAddressLine(const AccountConfiguration& account) const;
    std::string shown(const std::string& path) const {
        return abbreviatedPath(path, folders_.home);
    }

    const UserFolders& folders_;
    Discovery found_;
    std::vector<AccountConfiguration> accounts_;  // some without an address
    std::set<std::string> maildirs_;              // canonical paths, also of Inboxes elsewhere
    NotmuchConfiguration notmuch_;
};

void AccountSearch::findMaildirs() {
    addMbsyncAccounts(folders_.config + "/isyncrc");
    addMbsyncAccounts(folders_.home + "/.mbsyncrc");
    notmuch_ = notmuchConfiguration();
    if (!notmuch_.mailRoot.empty()) {
        addMaildirsIn(notmuch_.mailRoot);
    }
    addMaildirsIn(folders_.data + "/mail");
    addMaildirsIn(folders_.home + "/Mail");
    addMaildirsIn(folders_.home + "/Maildir");
    const std::string localMail = folders_.data + "/local-mail";
    if (isMailFolder(localMail + "/inbox")) {
        addMaildir(localMail, Layout::KMail);
    }
}

// A file that is not there is an empty one.
std::string AccountSearch::textOf(const std::string& path) {
    platform::ByteBuffer bytes;
    const auto error = platform::FileManager::readFile(path, bytes, kLongestFile);
    if (!error) {
        return std::string(bytes.view());
    }
    if (error->code != ENOENT && error->code != ENOTDIR) {
        found_.problems.push_back(error->description());
    }
    return {};
}

NotmuchConfiguration AccountSearch::notmuchConfiguration() {
    const char* chosen = std::getenv("NOTMUCH_CONFIG");
    if (chosen != nullptr && *chosen != '\0') {
        return readNotmuchConfiguration(textOf(chosen), folders_.home);
    }
    std::string text = textOf(folders_.config + "/notmuch/default/config");
    if (text.empty()) {
        text = textOf(folders_.home + "/.notmuch-config");
    }
    return readNotmuchConfiguration(text, folders_.home);
}

std::string AccountSearch::msmtpSender() {
    const std::string sender = readMsmtpSender(textOf(folders_.home + "/.msmtprc"));
    return sender.empty() ? readMsmtpSender(textOf(folders_.config + "/msmtp/config")) : sender;
}

void AccountSearch::addMbsyncAccounts(const std::string& file) {
    for (const MbsyncAccount& mbsync : readMbsyncConfiguration(textOf(file), folders_.home)) {
        if (!maildirs_.contains(canonicalPath(mbsync.maildir))) {
            addMbsyncAccount(mbsync);
        } else if (isAccountAddress(mbsync.user) && !hasAddress(mbsync.user)) {
            // Mail of one account must not get into the Archive or the Trash of another.
            found_.problems.push_back(shown(mbsync.maildir) +
                                      ": it has mail of another account; write [account " +
                                      mbsync.user + "] with maildir, inbox, archive and trash");
        }
    }
}

void AccountSearch::addMbsyncAccount(const MbsyncAccount& mbsync) {
    AccountConfiguration account;
    account.maildir = mbsync.maildir;
    account.layout = mbsync.layout;
    const std::string inbox = mbsyncInbox(mbsync);
    if (isAtOrBelow(inbox, mbsync.maildir)) {
        const std::string name = pathBelow(inbox, mbsync.maildir);
        if (name.find('/') != std::string::npos) {
            account.inbox.push_back(inbox);
        } else if (!platform::equalsIgnoringAsciiCase(name, "inbox")) {
            account.inbox.push_back(name);
        }
    } else if (!inbox.empty()) {
        account.inbox.push_back(inbox);
    }
    const bool isAddress = isAccountAddress(mbsync.user);
    if (isAddress && !giveAddress(account, mbsync.user)) {
        found_.problems.push_back(shown(mbsync.maildir) + ": " + mbsync.user +
                                  " is the address of another Maildir; this one is left out");
        maildirs_.insert(canonicalPath(mbsync.maildir));
    } else {
        add(std::move(account), inbox);
    }
}

// Empty if the names of the folders say it.
std::string AccountSearch::mbsyncInbox(const MbsyncAccount& mbsync) const {
    // mbsync's Inbox where none is named. Further accounts rarely have their mail there.
    const bool isUsual = mbsync.inbox == folders_.home + "/Maildir";
    const bool counts = !isUsual || (isMailFolder(mbsync.inbox) &&
                                     !maildirs_.contains(canonicalPath(mbsync.inbox)));
    return counts && mbsync.inbox != mbsync.maildir ? mbsync.inbox : std::string();
}

void AccountSearch::addMaildirsIn(const std::string& root) {
    if (addMaildir(root, Layout::Auto)) {
        return;
    }
    for (const FolderEntry& entry : foldersIn(root)) {
        // Folders beside each other that are no accounts: "Archive", "Sent" …
        if (!entry.name.starts_with('.') &&
            roleOfFolder(readableName(entry.name)).role == FolderRole::None) {
            addMaildir(appendingPathComponent(root, entry.name), Layout::Auto);
        }
    }
}

// Whether there is an account, known or new.
bool AccountSearch::addMaildir(const std::string& maildir, Layout layout) {
    const std::string inbox = layout == Layout::KMail ? maildir + "/inbox" : inboxOf(maildir);
    if (isKnown(maildir, inbox)) {
        return maildirs_.contains(canonicalPath(maildir));
    }
    if (inbox.empty()) {
        return false;
    }
    AccountConfiguration account;
    account.maildir = maildir;
    account.layout = layout;
    add(std::move(account), inbox);
    return true;
}

void AccountSearch::add(AccountConfiguration account, const std::string& inbox) {
    maildirs_.insert(canonicalPath(account.maildir));
    if (!inbox.empty()) {
        maildirs_.insert(canonicalPath(inbox));
    }
    if (isOneLine(account.maildir) && (account.inbox.empty() || isOneLine(inbox))) {
        accounts_.push_back(std::move(account));
    } else {
        found_.problems.push_back(shown(account.maildir) +
                                  ": the name of the folder is not text in UTF-8");
    }
}

bool AccountSearch::isKnown(const std::string& maildir, const std::string& inbox) const {
    const std::string path = canonicalPath(maildir);
    return (!inbox.empty() && maildirs_.contains(canonicalPath(inbox))) ||
           std::any_of(maildirs_.begin(), maildirs_.end(), [&](const std::string& known) {
               return isAtOrBelow(path, known);
           });
}

bool AccountSearch::hasAddress(const std::string& address) const {
    return std::any_of(accounts_.begin(), accounts_.end(), [&](const auto& account) {
        return platform::equalsIgnoringAsciiCase(account.address, address);
    });
}

// False if the address cannot be one or another Maildir has it.
bool AccountSearch::giveAddress(AccountConfiguration& account, const std::string& address) {
    const bool isGiven = isAccountAddress(address) && !hasAddress(address);
    account.address = isGiven ? address : std::string();
    return isGiven;
}

// A sender says nothing about which Maildir is meant, so it counts only if one alone is left.
void AccountSearch::giveSender() {
    const auto lacksAddress = [](const auto& account) { return account.address.empty(); };
    if (std::count_if(accounts_.begin(), accounts_.end(), lacksAddress) == 1) {
        const auto account = std::find_if(accounts_.begin(), accounts_.end(), lacksAddress);
        const std::string sender = msmtpSender();
        // The place of an address in a whole domain, and one that msmtp fills in.
        const bool isPattern = sender.find_first_of("*%") != std::string::npos;
        if (isPattern || !giveAddress(*account, sender)) {
            giveAddress(*account, notmuch_.address);
        }
    }
}

void AccountSearch::findAddresses(
    const std::function<std::string(const std::string& inbox)>& commonest) {
    giveSender();
    for (AccountConfiguration& account : accounts_) {
        const AccountFolders folders =
            account.address.empty() ? findFolders(account) : AccountFolders();
        if (!folders.inbox.empty() && commonest) {
            giveAddress(account, commonest(folders.inbox.front().path));
        }
    }
    giveSender();
}

std::string AccountSearch::unknownAddressLine(const AccountConfiguration& account) const {
    const std::string maildir = shown(account.maildir);
    std::string line = maildir + ": no mail address is known; ";
    line += "write [account YOU@EXAMPLE.COM] with maildir = " + maildir;
    return line + " into " + shown(folders_.config + "/quillet/mail-host.conf");
}

Discovery AccountSearch::result() {
    for (AccountConfiguration& account : accounts_) {
        if (account.address.empty()) {
            found_.problems.push_back(unknownAddressLine(account));
            continue;
        }
        if (platform::equalsIgnoringAsciiCase(account.address, notmuch_.address) &&
            isOneLine(notmuch_.name)) {
            account.name = notmuch_.name;
        }
        found_.configuration.accounts.push_back(std::move(account));
    }
    return std::move(found_);
}

}  // namespace

Discovery discoverAccounts(
    const UserFolders& folders,
    const std::function<std::string(const std::string& inbox)>& commonestAddress) {
    AccountSearch search(folders);
    search.findMaildirs();
    search.findAddresses(commonestAddress);
    return search.result();
}

}  // namespace quillet::mailhost
