#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "mailhost/accounts/Configuration.h"
#include "mailhost/clients/Clients.h"
#include "mailhost/host/AccountMail.h"
#include "mailhost/host/ContainerWriter.h"
#include "mailhost/host/UndoList.h"
#include "mailhost/maildir/Journal.h"
#include "mailhost/maildir/Mover.h"

#include "model/HostCommand.h"

namespace quillet::mailhost {

// What came of a command.
struct Outcome {
    enum class Kind { Ignored, Failed, NotFound, Found, Moved, Shown, Stored };

    Kind kind = Kind::Ignored;
    std::string reason;         // of Ignored and Failed: a sentence
    std::string target;         // of Moved and Stored: the path of the message's file now
    UndoList::Burst burst = 0;  // of Moved: what it is undone with
    std::string client;         // of Shown: the program
    MailFile message;           // of Found: the message to show; empty for a draft

    static Outcome of(Kind kind, const std::string& reason = {}) {
        Outcome outcome;
        outcome.kind = kind;
        outcome.reason = reason;
        return outcome;
    }
};

// The mail of all accounts, the container that shows it and the moves that commands ask for. Knows
// no event loop: the program says when. One thread.
class MailHost {
public:
    // The journal and the writer have to outlive the host. `shallEnd`: see Mover.
    MailHost(Journal& journal, ContainerWriter& writer, std::function<bool()> shallEnd);

    // Closes what was under way when the last host ended.
    void recover() { mover_.recover(); }

    // The accounts from now on. Accounts that stay the same keep what they have read.
    void configure(const Configuration& configuration);
    // Looks for the folders of all accounts again.
    void findFoldersAgain();
    // Lists the folders again.
    void refresh();
    // See ContainerWriter::publish().
    platform::Result<ContainerWriter::Changes> publish();

    // Carries a command out, except that it only finds what is to be shown. After archive and
    // delete the container has to be published.
    Outcome carryOut(const HostCommand& command);
    // Moves the messages of a burst back: see UndoList. The folders have to be read again.
    std::vector<UndoList::Undone> undo(UndoList::Burst burst);

    // What the widget shows, as of the last publish().
    const std::vector<PublishedAccount>& shown() const { return shown_; }
    // The subject of a message that is shown; empty if it has none.
    std::string subjectOf(const HostCommand& command) const;

    std::vector<std::string> watchedFolders() const;
    bool isUnsettled() const;
    bool isFolderMissing() const;
    bool readAhead(std::chrono::milliseconds budget);

    // The command to run after changes of an account, by its address; empty if there is none.
    std::vector<std::string> afterChange(const std::string& account);
    // The configuration's "open".
    const std::string& open() const { return open_; }
    // The Drafts folder of an account, else of the first account that has one.
    std::optional<std::string> draftsFolder(const std::string& account) const;

private:
    AccountMail* find(const std::string& address);
    // Remembers that the account's command after changes has to run. Before a move: a command that
    // runs for nothing does no harm, one that is forgotten may.
    void setPending(const std::string& account);
    Outcome move(AccountMail& account, const HostCommand& command);
    Outcome moveTo(AccountMail& account,
                   const AccountMail::Place& place,
                   const HostCommand& command);

    Journal& journal_;
    ContainerWriter& writer_;
    Mover mover_;
    UndoList undoList_{mover_};
    std::list<AccountMail> accounts_;
    std::vector<PublishedAccount> shown_;
    std::string open_ = "auto";
};

}  // namespace quillet::mailhost
