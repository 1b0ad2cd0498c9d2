#include "mailhost/host/AccountMail.h"

#include <algorithm>
#include <set>
#include <utility>

#include "mailhost/maildir/MaildirName.h"

#include "platform/base/Log.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet::mailhost {

using platform::Log;
using platform::Path::appendingPathComponent;

AccountMail::AccountMail(AccountConfiguration configuration)
    : configuration_(std::move(configuration)) {
    findFoldersAgain();
}

void AccountMail::addList(const MailFolder& folder, StandardFolder code, bool onlyFlagged) {
    lists_.push_back({folder, code, {onlyFlagged, configuration_.onlyUnread}});
    readers_.try_emplace(folder.path, folder.path);
}

void AccountMail::findFoldersAgain() {
    if (std::any_of(readers_.begin(), readers_.end(), [](const auto& entry) {
            return isMissing(entry.second) && !isGone(entry.second);
        })) {
        return;  // the last list stays for a while
    }
    folders_ = findFolders(configuration_);
    lists_.clear();
    for (const MailFolder& folder : folders_.inbox) {
        addList(folder, StandardFolder::Inbox, false);
        if (folders_.todoIsFlagged) {
            addList(folder, StandardFolder::ToDo, true);
        }
    }
    for (const MailFolder& folder : folders_.todo) {
        addList(folder, StandardFolder::ToDo, false);
    }
    for (const MailFolder& folder : folders_.memo) {
        addList(folder, StandardFolder::Memo, false);
    }
    std::erase_if(readers_, [this](const auto& entry) {
        return std::none_of(lists_.begin(), lists_.end(), [&entry](const List& list) {
            return list.folder.path == entry.first;
        });
    });
    if (std::exchange(toldProblems_, folders_.problems) != folders_.problems) {
        for (const std::string& problem : folders_.problems) {
            Log::write("MailHost %@: %@", {configuration_.address, problem});
        }
    }
}

std::vector<std::string> AccountMail::watchedFolders() const {
    std::vector<std::string> watched;
    for (const auto& [path, folder] : readers_) {
        watched.push_back(appendingPathComponent(path, "cur"));
        watched.push_back(appendingPathComponent(path, "new"));
    }
    if (folders_.inbox.empty()) {
        watched.push_back(configuration_.maildir);
    }
    return watched;
}

bool AccountMail::isMissing(const Folder& folder) {
    return folder.missingSince.has_value();
}

bool AccountMail::isGone(const Folder& folder) {
    return folder.missingSince && Clock::now() - *folder.missingSince >= kPatience;
}

bool AccountMail::isMaildirMissing() const {
    return !platform::FileManager::folderExists(configuration_.maildir);
}

void AccountMail::refresh() {
    if (folders_.inbox.empty()) {
        findFoldersAgain();
    }
    for (auto& [path, folder] : readers_) {
        if (const auto error = folder.reader.refresh()) {
            noteMissing(folder, *error);
        } else {
            folder.wasRead = true;
            folder.missingSince.reset();
        }
    }
}

// One line for all folders of a Maildir, which go together.
void AccountMail::noteMissing(Folder& folder, const platform::Error& error) {
    if (!folder.wasRead || folder.missingSince) {
        return;
    }
    if (std::none_of(readers_.begin(), readers_.end(), [](const auto& entry) {
            return isMissing(entry.second);
        })) {
        Log::write("MailHost the last list of %@ stays for ten minutes: %@",
                   {configuration_.address, error.description()});
    }
    folder.missingSince = Clock::now();
}

bool AccountMail::isAwaited() const {
    return isMaildirMissing() && Clock::now() - start_ < kPatience &&
           std::none_of(readers_.begin(), readers_.end(), [](const auto& entry) {
               return entry.second.wasRead;
           });
}

PublishedAccount AccountMail::published(std::int64_t now) {
    PublishedAccount account{configuration_.address, configuration_.name, {}};
    for (const List& list : lists_) {
        Folder& folder = readers_.at(list.folder.path);
        account.lists.push_back(
            {list.folder.name,
             list.code,
             isGone(folder) ? std::vector<MessageRow>() : folder.reader.newest(list.filter, now)});
    }
    return account;
}

bool AccountMail::isUnsettled() const {
    return std::any_of(readers_.begin(), readers_.end(), [](const auto& entry) {
        return entry.second.reader.isUnsettled();
    });
}

bool AccountMail::isFolderMissing() const {
    return isMaildirMissing() ||
           std::any_of(readers_.begin(), readers_.end(), [](const auto& entry) {
               return isMissing(entry.second);
           });
}

bool AccountMail::readAhead(std::chrono::milliseconds budget) {
    return std::any_of(readers_.begin(), readers_.end(), [budget](auto& entry) {
        return entry.second.reader.readAhead(budget);
    });
}

std::optional<AccountMail::Place> AccountMail::find(std::string_view identifier,
                                                    std::string_view folderStandardId) {
    if (!isIdentifier(identifier)) {
        return std::nullopt;  // a search for it would list all folders
    }
    std::vector<List> order = lists_;
    std::stable_partition(order.begin(), order.end(), [folderStandardId](const List& list) {
        return std::to_string(static_cast<int>(list.code)) == folderStandardId;
    });
    std::set<std::string_view> searched;  // the Inbox may be in two lists
    for (const List& list : order) {
        if (!searched.insert(list.folder.path).second) {
            continue;
        }
        const FolderReader& reader = readers_.at(list.folder.path).reader;
        if (auto file = reader.fileOf(identifier)) {
            return Place{list.folder.path, *std::move(file)};
        }
    }
    return std::nullopt;
}

void AccountMail::forget(const Place& place, std::string_view identifier) {
    readers_.at(place.folder).reader.forget(identifier);
}

}  // namespace quillet::mailhost
