#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mailhost/accounts/AccountFolders.h"
#include "mailhost/host/Publication.h"
#include "mailhost/maildir/FolderReader.h"

namespace quillet::mailhost {

// The mail of one account: its folders and what the widget shows of them. One thread.
class AccountMail {
public:
    // How long the last list of a folder that is missing or cannot be read stays.
    static constexpr std::chrono::minutes kPatience{10};

    // A message by its folder and its file there, as in MessageRow.
    struct Place {
        std::string folder;
        std::string file;
    };

    explicit AccountMail(AccountConfiguration configuration);

    const AccountConfiguration& configuration() const { return configuration_; }
    const AccountFolders& folders() const { return folders_; }
    // The folders whose changes matter: "cur" and "new" of each that is shown, and the Maildir as
    // long as it has no Inbox.
    std::vector<std::string> watchedFolders() const;

    // Looks for the account's folders again: some may have been made since. Changes nothing while
    // the list of a missing folder stays.
    void findFoldersAgain();
    // Lists the shown folders again, and looks for an Inbox if there is none. Logs a line when a
    // folder cannot be read any more.
    void refresh();
    // What the widget shows, as of the last refresh(). `now`: seconds since 1970.
    PublishedAccount published(std::int64_t now);
    // Whether the last list in the container stays: the Maildir was not there yet, for instance on
    // a disk that comes late.
    bool isAwaited() const;

    // Whether a folder was changing when it was listed: see FolderReader.
    bool isUnsettled() const;
    // Whether the Maildir, or a folder that was there before, is missing.
    bool isFolderMissing() const;
    // See FolderReader::readAhead().
    bool readAhead(std::chrono::milliseconds budget);

    // Where a message lies, first in the folders of the standard folder that a command names (as it
    // is written there). None if it is in no folder that is shown.
    std::optional<Place> find(std::string_view identifier, std::string_view folderStandardId);
    // Leaves out a message that was moved away from there.
    void forget(const Place& place, std::string_view identifier);

private:
    using Clock = std::chrono::steady_clock;

    struct Folder {
        explicit Folder(const std::string& path) : reader(path) {}

        FolderReader reader;
        bool wasRead = false;
        std::optional<Clock::time_point> missingSince;  // none before it was read
    };
    struct List {
        MailFolder folder;
        StandardFolder code;
        RowFilter filter;
    };

    bool isMaildirMissing() const;
    void noteMissing(Folder& folder, const platform::Error& error);
    static bool isMissing(const Folder& folder);
    static bool isGone(const Folder& folder);
    void addList(const MailFolder& folder, StandardFolder code, bool onlyFlagged);

    AccountConfiguration configuration_;
    AccountFolders folders_;
    std::vector<List> lists_;
    std::map<std::string, Folder> readers_;  // by path: a folder may be in two lists
    std::vector<std::string> toldProblems_;
    Clock::time_point start_ = Clock::now();
};

}  // namespace quillet::mailhost
