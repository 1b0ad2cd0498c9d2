#include "mailhost/host/MailHost.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <set>
#include <utility>

#include "mailhost/maildir/MessageFiles.h"

#include "model/HostInterface.h"
#include "platform/base/Log.h"
#include "platform/files/FileManager.h"

namespace quillet::mailhost {

namespace {

using platform::Log;

Outcome failed(const std::string& reason) {
    return Outcome::of(Outcome::Kind::Failed, reason);
}

Outcome notFound() {
    return Outcome::of(Outcome::Kind::NotFound);
}

// The folder that takes the message of a command; none if the account has no such folder.
const std::optional<MailFolder>& targetOf(const AccountFolders& folders,
                                          const HostCommand& command) {
    return command.word == ExtensionUtilities::commandArchive ? folders.archive : folders.trash;
}

Outcome noTarget(const AccountMail& account, const HostCommand& command) {
    const bool isArchive = command.word == ExtensionUtilities::commandArchive;
    return failed(std::string("No ") + (isArchive ? "Archive" : "Trash") +
                  " folder is known: write " + (isArchive ? "archive" : "trash") +
                  " = FOLDER below [account " + account.configuration().address +
                  "] into the configuration");
}

// Another program may have renamed the file since it was listed.
Outcome found(AccountMail& account, const HostCommand& command) {
    const auto place = account.find(command.identifier, command.folderStandardId);
    if (!place) {
        return notFound();
    }
    std::string path = place->folder + "/" + place->file;
    if (!platform::FileManager::fileExists(path)) {
        path = currentPath(path);
    }
    if (path.empty()) {
        return notFound();
    }
    Outcome outcome = Outcome::of(Outcome::Kind::Found);
    outcome.message = {path, place->folder};
    return outcome;
}

}  // namespace

MailHost::MailHost(Journal& journal, ContainerWriter& writer, std::function<bool()> shallEnd)
    : journal_(journal), writer_(writer), mover_(journal, std::move(shallEnd)) {}

void MailHost::configure(const Configuration& configuration) {
    open_ = configuration.open;
    std::list<AccountMail> before = std::exchange(accounts_, {});
    for (const AccountConfiguration& account : configuration.accounts) {
        const auto same = std::find_if(before.begin(), before.end(), [&](const AccountMail& each) {
            return each.configuration() == account;
        });
        if (same == before.end()) {
            accounts_.emplace_back(account);
        } else {
            accounts_.splice(accounts_.end(), before, same);
        }
    }
}

void MailHost::findFoldersAgain() {
    for (AccountMail& account : accounts_) {
        account.findFoldersAgain();
    }
}

void MailHost::refresh() {
    for (AccountMail& account : accounts_) {
        account.refresh();
    }
}

platform::Result<ContainerWriter::Changes> MailHost::publish() {
    const auto now = static_cast<std::int64_t>(std::time(nullptr));
    std::set<std::string> kept;
    shown_.clear();
    for (AccountMail& account : accounts_) {
        shown_.push_back(account.published(now));
        if (account.isAwaited()) {
            shown_.back().lists.clear();
            kept.insert(accountFolder(account.configuration().address));
        }
    }
    return writer_.publish(containerFiles(shown_), kept);
}

AccountMail* MailHost::find(const std::string& address) {
    const auto found =
        std::find_if(accounts_.begin(), accounts_.end(), [&address](const AccountMail& account) {
            return account.configuration().address == address;
        });
    return found == accounts_.end() ? nullptr : &*found;
}

Outcome MailHost::carryOut(const HostCommand& command) {
    if (!command.problem.empty()) {
        return Outcome::of(Outcome::Kind::Ignored, command.problem);
    }
    if (command.draft) {
        return Outcome::of(Outcome::Kind::Found);
    }
    AccountMail* const account = find(command.account);
    if (account == nullptr) {
        return notFound();
    }
    if (command.shows()) {
        return found(*account, command);
    }
    Outcome outcome = move(*account, command);
    if (outcome.kind == Outcome::Kind::Failed) {
        Log::write("MailHost %@ %@", {command.word, outcome.reason});
    }
    return outcome;
}

Outcome MailHost::move(AccountMail& account, const HostCommand& command) {
    const auto place = account.find(command.identifier, command.folderStandardId);
    if (!place) {
        account.refresh();  // the Maildir may have gone a moment ago
        return account.isFolderMissing() ? failed("A mail folder is missing or cannot be read")
                                         : notFound();
    }
    if (!targetOf(account.folders(), command)) {
        account.findFoldersAgain();
        if (!targetOf(account.folders(), command)) {
            return noTarget(account, command);
        }
    }
    return moveTo(account, *place, command);
}

Outcome MailHost::moveTo(AccountMail& account,
                         const AccountMail::Place& place,
                         const HostCommand& command) {
    const std::string& target = targetOf(account.folders(), command)->path;
    if (const auto refusal = whyNotMovable(place.folder, place.file, target)) {
        return failed(refusal->description());
    }
    setPending(command.account);
    const auto moved = mover_.move(command.identifier, place.folder, place.file, target);
    if (!moved) {
        return moved.error().code == ENOENT ? notFound() : failed(moved.error().description());
    }
    account.forget(place, command.identifier);
    const auto burst =
        undoList_.add({command.account, place.folder, moved.value()}, UndoList::Clock::now());
    Outcome outcome = Outcome::of(Outcome::Kind::Moved);
    outcome.target = moved.value();
    outcome.burst = burst;
    return outcome;
}

void MailHost::setPending(const std::string& account) {
    if (afterChange(account).empty()) {
        return;
    }
    if (const auto error = journal_.setPending(account, true)) {
        Log::write("MailHost journal %@", {error->description()});
    }
}

std::vector<UndoList::Undone> MailHost::undo(UndoList::Burst burst) {
    std::vector<UndoList::Undone> undone = undoList_.undo(
        burst, UndoList::Clock::now(), [this](const std::string& account) { setPending(account); });
    for (const UndoList::Undone& each : undone) {
        if (!each.file) {
            Log::write("MailHost undo %@", {each.file.error().description()});
        }
    }
    return undone;
}

std::string MailHost::subjectOf(const HostCommand& command) const {
    for (const PublishedAccount& account : shown_) {
        for (const PublishedList& list : account.lists) {
            const auto row =
                std::find_if(list.rows.begin(), list.rows.end(), [&command](const auto& each) {
                    return each.identifier == command.identifier;
                });
            if (row != list.rows.end() && account.address == command.account) {
                return row->subject;
            }
        }
    }
    return {};
}

std::vector<std::string> MailHost::watchedFolders() const {
    std::vector<std::string> watched;
    for (const AccountMail& account : accounts_) {
        const std::vector<std::string> folders = account.watchedFolders();
        watched.insert(watched.end(), folders.begin(), folders.end());
    }
    return watched;
}

bool MailHost::isUnsettled() const {
    return std::any_of(accounts_.begin(), accounts_.end(), [](const AccountMail& account) {
        return account.isUnsettled();
    });
}

bool MailHost::isFolderMissing() const {
    return std::any_of(accounts_.begin(), accounts_.end(), [](const AccountMail& account) {
        return account.isFolderMissing();
    });
}

bool MailHost::readAhead(std::chrono::milliseconds budget) {
    return std::any_of(accounts_.begin(), accounts_.end(), [budget](AccountMail& account) {
        return account.readAhead(budget);
    });
}

std::vector<std::string> MailHost::afterChange(const std::string& account) {
    const AccountMail* const found = find(account);
    return found == nullptr ? std::vector<std::string>() : found->configuration().afterChange;
}

std::optional<std::string> MailHost::draftsFolder(const std::string& account) const {
    std::optional<std::string> folder;
    for (const AccountMail& each : accounts_) {
        const bool isIts = each.configuration().address == account;
        if (const auto& drafts = each.folders().drafts; drafts && (isIts || !folder)) {
            folder = drafts->path;
        }
    }
    return folder;
}

}  // namespace quillet::mailhost
