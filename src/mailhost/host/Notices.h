#pragma once

#include <QTimer>
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "mailhost/host/MailHost.h"
#include "mailhost/host/NewMail.h"
#include "mailhost/host/UndoList.h"

#include "model/HostCommand.h"
#include "platform/desktop/Notifications.h"

namespace quillet::mailhost {

// What the user is told in notices of the desktop, in the user's language: of moves, with "Undo";
// of what could not be done; of new mail. Main thread only.
class Notices {
public:
    // What the user asks for in a notice. Called from the event loop.
    struct Requests {
        std::function<void(UndoList::Burst burst)> undo;
        // The URL of the command "open", and the permission to come to the front (may be empty).
        std::function<void(const std::string& url, const std::string& token)> open;
    };
    using Clock = UndoList::Clock;

    // The bus has to outlive the notices.
    Notices(platform::SessionBus& bus, Requests requests);

    // The keys "notices" and "notify" of the configuration: nothing is shown before this call.
    void configure(bool showsMoves, bool showsNewMail);

    // Of an archived or deleted message, and of one that could not be moved. The moves of a burst
    // have one notice, and so have failures within two seconds.
    void tell(const HostCommand& command,
              const Outcome& outcome,
              const std::string& subject,
              Clock::time_point now);
    // Of the messages that an undo could not bring back.
    void tellUndone(const std::vector<UndoList::Undone>& undone);
    void tellAfterChangeFailed(const std::string& account, const std::string& failure);
    // Of a draft: the folder where it was stored (empty: a program has it), and how many of its
    // files could not be taken. Nothing is shown if there is nothing to say.
    void tellDraft(const std::string& folder, std::size_t leftOut);

    // Looks for new mail in what is shown now: see NewMail::read().
    void read(const std::vector<PublishedAccount>& shown, bool isComplete, std::int64_t now);
    // See NewMail::expect().
    void expect(const std::string& identifier, std::int64_t now) {
        newMail_.expect(identifier, now);
    }

private:
    using Id = platform::Notifications::Id;
    using Notice = platform::Notifications::Notice;
    enum class Slot { Refused, NotUndone, AfterChange, Draft, NewMail };
    struct Undoable {
        UndoList::Burst burst = 0;
        Clock::time_point end;
    };
    // The burst that goes on.
    struct BurstNotice {
        UndoList::Burst burst = 0;
        Id notice = 0;
        std::size_t archived = 0;
        std::size_t deleted = 0;
        std::vector<std::string> subjects;
    };

    void tellMoved(const HostCommand& command, const Outcome& outcome, const std::string& subject);
    void tellRefused(const std::string& reason, Clock::time_point now);
    void closeOld();
    void announce();
    // One notice at a time of each kind.
    void show(Slot slot, Notice notice);
    void invoked(Id notice, const std::string& key, const std::string& token);
    void closed(Id notice);

    Requests requests_;
    bool showsMoves_ = false;
    bool showsNewMail_ = false;
    BurstNotice burst_;
    std::map<Id, Undoable> undoable_;
    QTimer closeOld_;
    std::map<Slot, Id> slots_;
    std::size_t refused_ = 0;  // since failures follow each other
    Clock::time_point lastRefused_;
    NewMail newMail_;
    std::vector<NewMail::Message> announced_;  // still unread, newest first
    platform::Notifications notifications_;
};

}  // namespace quillet::mailhost
