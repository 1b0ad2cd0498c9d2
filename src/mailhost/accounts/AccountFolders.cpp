#include "mailhost/accounts/AccountFolders.h"

#include <algorithm>
#include <array>
#include <functional>
#include <set>
#include <utility>

#include "mailhost/accounts/FolderLayout.h"
#include "mailhost/accounts/FolderRoles.h"
#include "mailhost/accounts/HomePath.h"
#include "mailhost/accounts/ModifiedUtf7.h"

#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet::mailhost {

namespace {

using Folders = std::vector<MailFolder>;

// A role for sentences and as a key of the configuration file.
struct RoleWords {
    std::string_view name;
    std::string_view key;
};

class FolderFinder {
public:
    explicit FolderFinder(const AccountConfiguration& account)
        : account_(account),
          layout_(account.layout == Layout::Auto ? detectLayout(account.maildir) : account.layout),
          isThere_(platform::FileManager::folderExists(account.maildir)),
          folders_(mailFolders(account.maildir, layout_)) {}

    AccountFolders run() {
        if (!isThere_) {
            addProblem("the folder is missing or cannot be entered");
        }
        findConfigured();
        findByNames();
        if (isThere_) {
            reportMissing(found_.inbox.empty(), {"Inbox", "inbox"});
            reportMissing(!found_.archive, {"Archive", "archive"});
            reportMissing(!found_.trash, {"Trash", "trash"});
        }
        removeHidden();
        return std::move(found_);
    }

private:
    void addProblem(const std::string& text) {
        found_.problems.push_back(account_.maildir + ": " + text);
    }

    void findConfigured();
    Folders resolved(const std::vector<std::string>& names, std::string_view key);
    std::optional<MailFolder> listedFolder(std::string_view name) const;
    MailFolder folderAt(const std::string& path) const;
    MailFolder expectedFolder(const std::string& name) const;

    void findByNames();
    Folders candidates(FolderRole role) const;
    std::optional<MailFolder> onlyOne(const Folders& folders, const RoleWords& words);
    std::optional<MailFolder> archiveByName();
    std::optional<MailFolder> inboxByName();
    void reportMissing(bool isMissing, const RoleWords& words);

    void removeHidden();
    bool isHidden(const MailFolder& folder) const;

    const AccountConfiguration& account_;
    Layout layout_;
    bool isThere_;
    Folders folders_;
    AccountFolders found_;
    std::set<std::string> configuredPaths_;
    std::set<std::string> hiddenPaths_;    // canonical
    std::set<std::string_view> reported_;  // keys of roles that have their line already
};

void FolderFinder::findConfigured() {
    found_.inbox = resolved(account_.inbox, "inbox");
    found_.todo = resolved(account_.todo, "todo");
    found_.memo = resolved(account_.memo, "memo");
    const auto first = [&](const std::vector<std::string>& names, std::string_view key) {
        const Folders folders = resolved(names, key);
        for (const MailFolder& folder : folders) {
            hiddenPaths_.insert(canonicalPath(folder.path));
        }
        return folders.empty() ? std::nullopt : std::optional(folders.front());
    };
    found_.archive = first(account_.archive, "archive");
    found_.trash = first(account_.trash, "trash");
}

Folders FolderFinder::resolved(const std::vector<std::string>& names, std::string_view key) {
    Folders result;
    for (const std::string& name : names) {
        if (hasParentComponent(name) && !name.starts_with('/')) {
            addProblem(std::string(key) + " cannot lead out of the Maildir by \"..\"");
            continue;
        }
        const std::optional<MailFolder> listed = listedFolder(name);
        const MailFolder folder = listed                  ? *listed
                                  : name.starts_with('/') ? folderAt(name)
                                                          : expectedFolder(name);
        const bool isNew = std::none_of(result.begin(), result.end(), [&](const auto& other) {
            return other.path == folder.path;
        });
        if (isNew) {
            configuredPaths_.insert(folder.path);
            result.push_back(folder);
            if (isThere_ && !isMailFolder(folder.path)) {
                addProblem("the folder \"" + folder.name + "\" (" + std::string(key) +
                           ") is not there");
            }
        }
    }
    return result;
}

// The folder of this path, of this name, of the name that this one encodes, or the only one whose
// name differs in case alone.
std::optional<MailFolder> FolderFinder::listedFolder(std::string_view name) const {
    const std::string readable = readableName(name);
    const std::string folded = foldedName(readable);
    const std::array<std::function<bool(const MailFolder&)>, 4> rules{
        [&](const MailFolder& folder) { return folder.path == name; },
        [&](const MailFolder& folder) { return folder.name == name; },
        [&](const MailFolder& folder) { return folder.name == readable; },
        [&](const MailFolder& folder) { return foldedName(folder.name) == folded; }};
    for (const auto& rule : rules) {
        const auto match = std::find_if(folders_.begin(), folders_.end(), rule);
        if (match != folders_.end() && std::none_of(match + 1, folders_.end(), rule)) {
            return *match;
        }
    }
    return std::nullopt;
}

MailFolder FolderFinder::folderAt(const std::string& path) const {
    const bool isBelow = path != account_.maildir && isAtOrBelow(path, account_.maildir);
    return {readableName(isBelow ? pathBelow(path, account_.maildir)
                                 : platform::Path::lastPathComponent(path)),
            path};
}

// Where a folder lies that is no part of the list, for instance because it does not exist yet.
MailFolder FolderFinder::expectedFolder(const std::string& name) const {
    const std::string literal = folderPath(account_.maildir, name, layout_);
    const std::string encoded = folderPath(account_.maildir, encodeModifiedUtf7(name), layout_);
    return {readableName(name),
            !isMailFolder(literal) && isMailFolder(encoded) ? encoded : literal};
}

void FolderFinder::findByNames() {
    const auto list = [](std::optional<MailFolder> folder) {
        return folder ? Folders{std::move(*folder)} : Folders();
    };
    if (account_.inbox.empty()) {
        found_.inbox = list(inboxByName());
    }
    if (account_.archive.empty()) {
        found_.archive = archiveByName();
    }
    if (account_.trash.empty()) {
        found_.trash = onlyOne(candidates(FolderRole::Trash), {"Trash", "trash"});
    }
    if (account_.memo.empty()) {
        found_.memo = list(onlyOne(candidates(FolderRole::Memo), {"Memo folder", "memo"}));
    }
    if (account_.todo.empty() && !account_.todoIsFlagged) {
        found_.todo = list(onlyOne(candidates(FolderRole::ToDo), {"To Do folder", "todo"}));
    }
    found_.todoIsFlagged = account_.todoIsFlagged || (account_.todo.empty() && found_.todo.empty());
    const Folders drafts = candidates(FolderRole::Drafts);
    if (drafts.size() == 1) {
        found_.drafts = drafts.front();
    }
}

// The folders that have the role by their names and none by the configuration.
Folders FolderFinder::candidates(FolderRole role) const {
    Folders result;
    std::copy_if(folders_.begin(),
                 folders_.end(),
                 std::back_inserter(result),
                 [&](const MailFolder& folder) {
                     const NamedRole named = roleOfFolder(folder.name);
                     return named.role == role && named.year == 0 &&
                            !configuredPaths_.contains(folder.path);
                 });
    return result;
}

std::optional<MailFolder> FolderFinder::onlyOne(const Folders& folders, const RoleWords& words) {
    if (folders.size() > 1) {
        addProblem("\"" + folders[0].name + "\" and \"" + folders[1].name +
                   "\" both look like the " + std::string(words.name) + "; write " +
                   std::string(words.key) + " = FOLDER into the configuration");
        reported_.insert(words.key);
    }
    return folders.size() == 1 ? std::optional(folders.front()) : std::nullopt;
}

// Folders of single years count only if there is no other archive, and "All Mail", which holds the
// Inbox too, only if there is neither.
std::optional<MailFolder> FolderFinder::archiveByName() {
    constexpr RoleWords kWords{"Archive", "archive"};
    Folders archives = candidates(FolderRole::Archive);
    if (archives.empty()) {
        unsigned newest = 1;
        for (const MailFolder& folder : folders_) {
            const unsigned year = roleOfFolder(folder.name).year;
            if (year >= newest && !configuredPaths_.contains(folder.path)) {
                archives.resize(year > newest ? 0 : archives.size());
                archives.push_back(folder);
                newest = year;
            }
        }
    }
    return onlyOne(archives.empty() ? candidates(FolderRole::AllMail) : archives, kWords);
}

// The Maildir itself comes first: it is where mail is delivered.
std::optional<MailFolder> FolderFinder::inboxByName() {
    Folders inboxes = candidates(FolderRole::Inbox);
    const auto root = std::find_if(inboxes.begin(), inboxes.end(), [&](const MailFolder& folder) {
        return folder.path == account_.maildir;
    });
    return root != inboxes.end() ? *root : onlyOne(inboxes, {"Inbox", "inbox"});
}

void FolderFinder::reportMissing(bool isMissing, const RoleWords& words) {
    if (isMissing && !reported_.contains(words.key)) {
        addProblem("no " + std::string(words.name) + " is found; write " + std::string(words.key) +
                   " = FOLDER into the configuration");
    }
}

void FolderFinder::removeHidden() {
    for (const auto& folder : {found_.archive, found_.trash, found_.drafts}) {
        if (folder) {
            hiddenPaths_.insert(canonicalPath(folder->path));
        }
    }
    for (Folders* shown : {&found_.inbox, &found_.todo, &found_.memo}) {
        for (const MailFolder& folder : *shown) {
            if (isHidden(folder)) {
                addProblem("\"" + folder.name +
                           "\" is not shown: Archive, Trash, Drafts and Junk never are");
            }
        }
        std::erase_if(*shown, [&](const MailFolder& folder) { return isHidden(folder); });
    }
}

bool FolderFinder::isHidden(const MailFolder& folder) const {
    constexpr std::array kHidden{
        FolderRole::Archive, FolderRole::Trash, FolderRole::Drafts, FolderRole::Junk};
    const FolderRole role = roleOfFolder(folder.name).role;
    return std::find(kHidden.begin(), kHidden.end(), role) != kHidden.end() ||
           hiddenPaths_.contains(canonicalPath(folder.path));
}

}  // namespace

AccountFolders findFolders(const AccountConfiguration& account) {
    return FolderFinder(account).run();
}

}  // namespace quillet::mailhost
