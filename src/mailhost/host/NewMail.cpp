#include "mailhost/host/NewMail.h"

namespace quillet::mailhost {

std::vector<MessageRow> NewMail::readFolder(const std::vector<MessageRow>& rows,
                                            Folder& folder,
                                            std::int64_t since) {
    std::vector<MessageRow> found;
    for (const MessageRow& row : rows) {
        const bool isNew = row.date > since && known_.emplace(row.identifier, row.date).second &&
                           folder.isComplete && row.date > folder.hiddenUntil;
        if (isNew && row.isUnread) {
            found.push_back(row);
        }
    }
    folder.hiddenUntil =
        rows.size() == kNewestRows ? rows.back().date : std::numeric_limits<std::int64_t>::min();
    return found;
}

std::vector<NewMail::Message> NewMail::read(const std::vector<PublishedAccount>& shown,
                                            bool isComplete,
                                            std::int64_t now) {
    const std::int64_t since = now - kNewFor;
    std::vector<Message> found;
    for (const PublishedAccount& account : shown) {
        for (const PublishedList& list : account.lists) {
            if (list.code != StandardFolder::Inbox) {
                continue;
            }
            Folder& folder = folders_[account.address + '/' + list.folder];
            for (const MessageRow& row : readFolder(list.rows, folder, since)) {
                found.push_back({account.address, row.identifier, row.from, row.subject});
            }
            folder.isComplete = folder.isComplete || isComplete;
        }
    }
    std::erase_if(known_, [since](const auto& entry) { return entry.second <= since; });
    return found;
}

}  // namespace quillet::mailhost
