#include "mailhost/host/Notices.h"

#include <algorithm>
#include <chrono>
#include <set>
#include <utility>

#include "model/HostInterface.h"
#include "platform/base/TextFormat.h"
#include "platform/extension/Bundle.h"
#include "util/RequestUtils.h"

namespace quillet::mailhost {

namespace {

constexpr std::string_view kUndo = "undo";
constexpr std::string_view kClick = "default";
constexpr std::size_t kMostLines = 3;

const platform::Notifications::Sender kSender{
    "Quillet", "it.tarno.quillet.today", "it.tarno.quillet"};

std::string localized(std::string_view key) {
    return platform::Bundle::main().localizedString(key);
}

// The text of `one`, or that of `several` with the number.
std::string counted(std::size_t count, std::string_view one, std::string_view several) {
    return count == 1 ? localized(one)
                      : platform::formatText(localized(several), {std::to_string(count)});
}

std::string orElse(const std::string& text, std::string_view key) {
    return text.empty() ? localized(key) : text;
}

// The first lines, and a sign that there are more.
std::string linesOf(const std::vector<std::string>& lines) {
    std::string text;
    for (std::size_t i = 0; i < std::min(lines.size(), kMostLines); ++i) {
        text += (i == 0 ? "" : "\n") + lines[i];
    }
    return lines.size() > kMostLines ? text + "\n…" : text;
}

std::string urlToOpen(const NewMail::Message& message) {
    return platform::formatText("%@://%@?mail=%@&messageid=%@&folderstandardid=%@",
                                {kHostScheme,
                                 ExtensionUtilities::commandOpen,
                                 RequestUtils::URLEncodedString(message.account),
                                 message.identifier,
                                 std::to_string(static_cast<int>(StandardFolder::Inbox))});
}

std::set<std::string> unreadIn(const std::vector<PublishedAccount>& shown) {
    std::set<std::string> unread;
    for (const PublishedAccount& account : shown) {
        for (const PublishedList& list : account.lists) {
            for (const MessageRow& row : list.rows) {
                if (row.isUnread) {
                    unread.insert(row.identifier);
                }
            }
        }
    }
    return unread;
}

}  // namespace

Notices::Notices(platform::SessionBus& bus, Requests requests)
    : requests_(std::move(requests)),
      notifications_(
          bus,
          kSender,
          [this](Id notice, const std::string& key, const std::string& token) {
              invoked(notice, key, token);
          },
          [this](Id notice) { closed(notice); }) {
    closeOld_.setSingleShot(true);
    closeOld_.setTimerType(Qt::PreciseTimer);
    closeOld_.callOnTimeout([this] { closeOld(); });
}

void Notices::configure(bool showsMoves, bool showsNewMail) {
    showsMoves_ = showsMoves;
    showsNewMail_ = showsNewMail;
}

void Notices::tell(const HostCommand& command,
                   const Outcome& outcome,
                   const std::string& subject,
                   Clock::time_point now) {
    if (!showsMoves_) {
        return;
    }
    if (outcome.kind == Outcome::Kind::Moved) {
        tellMoved(command, outcome, subject);
    } else if (outcome.kind == Outcome::Kind::Failed && !command.shows()) {
        tellRefused(outcome.reason, now);
    }
}

void Notices::tellMoved(const HostCommand& command,
                        const Outcome& outcome,
                        const std::string& subject) {
    if (burst_.burst != outcome.burst) {
        burst_ = {};
        burst_.burst = outcome.burst;
    }
    ++(command.word == ExtensionUtilities::commandArchive ? burst_.archived : burst_.deleted);
    burst_.subjects.push_back(orElse(subject, "No subject"));
    std::string summary;
    if (burst_.archived > 0) {
        summary = counted(burst_.archived, "Message archived", "Messages archived: %@");
    }
    if (burst_.deleted > 0) {
        summary += (summary.empty() ? "" : ", ") +
                   counted(burst_.deleted, "Message deleted", "Messages deleted: %@");
    }
    burst_.notice = notifications_.notify(
        {summary, linesOf(burst_.subjects), {{std::string(kUndo), localized("Undo")}}, {}},
        burst_.notice);
    undoable_[burst_.notice] = {burst_.burst, Clock::now() + UndoList::kOpen};
    closeOld();
}

// A notice whose button does nothing any more is in the way. The oldest one has the least number.
void Notices::closeOld() {
    const auto now = Clock::now();
    while (!undoable_.empty() && undoable_.begin()->second.end <= now) {
        notifications_.close(undoable_.begin()->first);
        undoable_.erase(undoable_.begin());
    }
    if (!undoable_.empty()) {
        closeOld_.start(
            std::chrono::ceil<std::chrono::milliseconds>(undoable_.begin()->second.end - now));
    }
}

void Notices::tellRefused(const std::string& reason, Clock::time_point now) {
    refused_ = now - lastRefused_ <= UndoList::kPause ? refused_ + 1 : 1;
    lastRefused_ = now;
    show(Slot::Refused,
         {counted(refused_, "Message not moved", "Messages not moved: %@"), reason, {}, {}});
}

void Notices::tellUndone(const std::vector<UndoList::Undone>& undone) {
    std::vector<std::string> reasons;
    for (const UndoList::Undone& each : undone) {
        if (!each.file) {
            reasons.push_back(each.file.error().description());
        }
    }
    if (showsMoves_ && !reasons.empty()) {
        show(Slot::NotUndone,
             {platform::formatText(localized("Messages not brought back: %@"),
                                   {std::to_string(reasons.size())}),
              linesOf(reasons),
              {},
              {}});
    }
}

void Notices::tellAfterChangeFailed(const std::string& account, const std::string& failure) {
    if (showsMoves_) {
        show(Slot::AfterChange,
             {localized("The command after changes failed"),
              account + ": " + failure + "\n" + localized("Your mail is safe on this computer."),
              {},
              {}});
    }
}

void Notices::tellDraft(const std::string& folder, std::size_t leftOut) {
    if (!showsMoves_) {
        return;
    }
    const std::string files = leftOut == 0 ? ""
                                           : platform::formatText(localized("Files left out: %@"),
                                                                  {std::to_string(leftOut)});
    if (!folder.empty()) {
        show(Slot::Draft,
             {localized("Draft saved"), folder + (leftOut == 0 ? "" : "\n" + files), {}, {}});
    } else if (leftOut > 0) {
        show(Slot::Draft, {files, {}, {}, {}});
    }
}

void Notices::read(const std::vector<PublishedAccount>& shown, bool isComplete, std::int64_t now) {
    std::vector<NewMail::Message> found = newMail_.read(shown, isComplete, now);
    if (!announced_.empty()) {
        const std::set<std::string> unread = unreadIn(shown);
        std::erase_if(announced_, [&unread](const NewMail::Message& message) {
            return !unread.contains(message.identifier);
        });
        if (announced_.empty()) {
            notifications_.close(std::exchange(slots_[Slot::NewMail], 0));
        }
    }
    if (showsNewMail_ && !found.empty()) {
        announced_.insert(announced_.begin(), found.begin(), found.end());
        announce();
    }
}

void Notices::announce() {
    std::string summary = orElse(announced_.front().from, "No Name");
    std::vector<std::string> lines{orElse(announced_.front().subject, "No subject")};
    if (announced_.size() > 1) {
        summary = counted(announced_.size(), {}, "New messages: %@");
        lines.clear();
        for (const NewMail::Message& message : announced_) {
            lines.push_back(orElse(message.from, "No Name") + ": " +
                            orElse(message.subject, "No subject"));
        }
    }
    show(Slot::NewMail,
         {std::move(summary),
          linesOf(lines),
          {{std::string(kClick), localized("Open")}},
          "email.arrived"});
}

void Notices::show(Slot slot, Notice notice) {
    slots_[slot] = notifications_.notify(std::move(notice), slots_[slot]);
}

void Notices::invoked(Id notice, const std::string& key, const std::string& token) {
    notifications_.close(notice);  // some services leave it there
    if (const auto undoable = undoable_.extract(notice); key == kUndo && !undoable.empty()) {
        requests_.undo(undoable.mapped().burst);
    } else if (key == kClick && notice == slots_[Slot::NewMail] && !announced_.empty()) {
        const NewMail::Message message = announced_.front();
        closed(notice);
        requests_.open(urlToOpen(message), token);
    }
}

void Notices::closed(Id notice) {
    undoable_.erase(notice);
    if (notice == slots_[Slot::NewMail]) {
        announced_.clear();
    }
}

}  // namespace quillet::mailhost
