#include "mailhost/host/AccountMail.h"

#include <algorithm>
#include <set>
#include <utility>

#include "mailhost/maildir/MaildirName.h"

#include "platform/base/Log.h"
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
    return watched;
}

bool AccountMail::isMissing(const Folder& folder) {
    return folder.missingSince.has_value();
}

bool AccountMail::isGone(const Folder& folder) {
    return folder.missingSince && Clock::now() - *folder.missingSince >= kPatience;
}

void AccountMail::refresh() {
    if (folders_.inbox.empty()) {
        findFoldersAgain();
    }
    bool wasFolderMissing = isFolderMissing();  // all folders of a Maildir go together
    for (auto& [path, folder] : readers_) {
        const auto error = folder.reader.refresh();
        if (!error) {
            folder.missingSince.reset();
        } else if (!folder.missingSince) {
            if (!wasFolderMissing) {
                Log::write("MailHost the last list of %@ stays for ten minutes: %@",
                           {configuration_.address, error->description()});
            }
            wasFolderMissing = true;
            folder.missingSince = Clock::now();
        }
    }
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
    return folders_.inbox.empty() ||
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

void AccountMail::forget(std::string_view identifier) {
    for (auto& [path, folder] : readers_) {
        folder.reader.forget(identifier);
    }
}

}  // namespace quillet::mailhost
