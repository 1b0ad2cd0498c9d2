#include "mailhost/clients/Clients.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <unistd.h>
#include <utility>

#include "mailhost/clients/DraftFiles.h"
#include "mailhost/clients/DraftMessage.h"
#include "mailhost/clients/MailtoUrl.h"
#include "mailhost/maildir/Delivery.h"
#include "mailhost/maildir/ReplyHeader.h"

#include "platform/base/Log.h"
#include "platform/desktop/Queues.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet::mailhost {

namespace {

using platform::Activation;
using platform::Application;
using platform::Log;
using platform::Path::appendingPathComponent;

constexpr std::chrono::seconds kStartLimit{10};
constexpr std::chrono::seconds kLockPatience{5};
constexpr std::string_view kOwnWindow = "quillet-message";
constexpr std::string_view kDraftFile = "draft.eml";

// A way to show something: the name of a program for people, and its command.
struct Attempt {
    std::string client;
    Command command;
};
using Attempts = std::vector<Attempt>;

void addAttempt(Attempts& attempts, const std::string& client, std::optional<Command> command) {
    const auto isSame = [&](const Attempt& each) { return each.command == command; };
    if (command && !command->empty() && std::none_of(attempts.begin(), attempts.end(), isSame)) {
        attempts.push_back({client, *std::move(command)});
    }
}

// The program that a desktop entry belongs to, if it is one that the host knows.
std::optional<ClientProgram> knownProgram(const std::optional<Application>& application) {
    const auto client = application ? clientOfEntry(application->identifier) : std::nullopt;
    return client ? std::optional(ClientProgram{*client, application}) : std::nullopt;
}

std::optional<Application> mailtoApplication() {
    return platform::applicationFor("x-scheme-handler/mailto");
}

// Saves a draft in its mail folder. Its copied files are in the message then.
ClientOutcome storedDraft(const Draft& draft,
                          const std::string& folder,
                          const std::optional<std::string>& draftsFolder) {
    if (!draftsFolder) {
        return {false, {}, {}, "no program takes the draft, and no Drafts folder is known", {}};
    }
    const auto message = draftMessage(draft, DraftForm::Stored);
    const auto stored = message ? deliver(*draftsFolder, message.value(), "DS") : message;
    if (!stored) {
        return {false, {}, {}, "the draft cannot be saved: " + stored.error().text, {}};
    }
    platform::FileManager::removeItem(folder);
    return {false, {}, stored.value(), {}, {}};
}

}  // namespace

class Clients::State : public std::enable_shared_from_this<State> {
public:
    State(Folders folders, Start start) : folders_(std::move(folders)), start_(std::move(start)) {}

    void setOpen(const std::string& open) { open_ = open; }
    const Folders& folders() const { return folders_; }

    void addShowing(Attempts& attempts, const ShownMessage& message) const;
    void addReplies(Attempts& attempts, const ReplyHeader& header) const;
    void composeWith(const Draft& draft,
                     const std::string& folder,
                     const std::optional<std::string>& draftsFolder,
                     const std::optional<Activation>& activation,
                     const Done& done);
    // Tries one after the other. `otherwise` is called if none of them does.
    void run(Attempts attempts,
             const Activation& activation,
             const Done& done,
             const std::function<void()>& otherwise);

private:
    std::optional<ClientProgram> configuredProgram() const;
    std::string ownWindow() const;
    void addComposers(Attempts& attempts, const Draft& draft) const;
    // Into Drafts, else into a file for a program.
    void store(const Draft& draft,
               const std::string& folder,
               const std::optional<std::string>& draftsFolder,
               const std::optional<Activation>& activation,
               const Done& done);
    // Hands the whole draft to a program as a file. `problem`: why it could not be stored.
    void openFile(const Draft& draft,
                  const std::string& folder,
                  const Activation& activation,
                  const std::string& problem,
                  const Done& done);
    void addFileComposers(Attempts& attempts, const std::string& file) const;

    Folders folders_;
    Start start_;
    std::string open_ = "auto";
    std::map<int, platform::ProcessHandle> starting_;
    int lastStart_ = 0;
};

std::optional<ClientProgram> Clients::State::configuredProgram() const {
    const auto client = clientNamed(open_);
    return client ? std::optional(ClientProgram{*client, std::nullopt}) : std::nullopt;
}

std::string Clients::State::ownWindow() const {
    const std::string beside = appendingPathComponent(folders_.programs, kOwnWindow);
    return ::access(beside.c_str(), X_OK) == 0 ? beside : std::string(kOwnWindow);
}

void Clients::State::addShowing(Attempts& attempts, const ShownMessage& message) const {
    if (const auto program = configuredProgram()) {
        addAttempt(attempts, open_, showCommand(*program, message));
    } else if (open_ != "auto") {
        auto command = configuredCommand(open_, message);
        const std::string name = command && !command->empty() ? command->front() : "";
        addAttempt(attempts, name, std::move(command));
    }
    const auto mid = platform::applicationFor("x-scheme-handler/mid");
    if (mid && isPlainMessageId(message.messageId)) {
        addAttempt(attempts, mid->identifier, commandOf(*mid, {midUrl(message.messageId)}));
    }
    if (const auto program = knownProgram(mailtoApplication())) {
        addAttempt(attempts, program->application->identifier, showCommand(*program, message));
    }
    if (const auto file = platform::applicationFor("message/rfc822")) {
        addAttempt(attempts, file->identifier, commandForFile(*file, message.file));
    }
    addAttempt(attempts, std::string(kOwnWindow), Command{ownWindow(), message.file});
}

void Clients::State::addReplies(Attempts& attempts, const ReplyHeader& header) const {
    const std::string url = mailtoForReply(header);
    if (const auto program = configuredProgram()) {
        addAttempt(attempts, open_, openCommand(*program, url));
    }
    if (const auto application = mailtoApplication()) {
        addAttempt(attempts, application->identifier, commandOf(*application, {url}));
    }
}

void Clients::State::addComposers(Attempts& attempts, const Draft& draft) const {
    if (const auto program = configuredProgram()) {
        addAttempt(attempts, open_, composeCommand(*program, draft));
    }
    const auto application = mailtoApplication();
    if (const auto program = knownProgram(application)) {
        addAttempt(attempts, application->identifier, composeCommand(*program, draft));
    } else if (application && draft.files.empty()) {
        const std::string url = mailtoForDraft(draft, MailtoFiles::LeftOut);
        addAttempt(attempts, application->identifier, commandOf(*application, {url}));
    }
}

void Clients::State::run(Attempts attempts,
                         const Activation& activation,
                         const Done& done,
                         const std::function<void()>& otherwise) {
    if (attempts.empty()) {
        otherwise();
        return;
    }
    const Attempt first = attempts.front();
    attempts.erase(attempts.begin());
    const int number = ++lastStart_;
    starting_[number] =
        start_(first.command, activation, [=, this](const std::optional<std::string>& failure) {
            const auto self = shared_from_this();  // `done` may end it
            starting_.erase(number);
            if (!failure) {
                done({true, first.client, {}, {}, {}});
                return;
            }
            Log::write("MailHost %@ did not open: %@", {first.client, *failure});
            run(attempts, activation, done, otherwise);
        });
}

void Clients::State::composeWith(const Draft& draft,
                                 const std::string& folder,
                                 const std::optional<std::string>& draftsFolder,
                                 const std::optional<Activation>& activation,
                                 const Done& done) {
    Attempts attempts;
    if (activation) {
        addComposers(attempts, draft);
    }
    run(std::move(attempts), activation.value_or(Activation()), done, [=, this] {
        store(draft, folder, draftsFolder, activation, done);
    });
}

void Clients::State::store(const Draft& draft,
                           const std::string& folder,
                           const std::optional<std::string>& draftsFolder,
                           const std::optional<Activation>& activation,
                           const Done& done) {
    const std::weak_ptr<State> weak = weak_from_this();
    platform::backgroundQueue().async([=] {
        const ClientOutcome outcome = storedDraft(draft, folder, draftsFolder);
        platform::mainQueue().async([=] {
            const auto self = weak.lock();
            if (self && (!outcome.storedAt.empty() || !activation)) {
                done(outcome);
            } else if (self) {
                self->openFile(draft, folder, *activation, outcome.reason, done);
            }
        });
    });
}

void Clients::State::openFile(const Draft& draft,
                              const std::string& folder,
                              const Activation& activation,
                              const std::string& problem,
                              const Done& done) {
    const std::string file = appendingPathComponent(folder, kDraftFile);
    const std::weak_ptr<State> weak = weak_from_this();
    platform::backgroundQueue().async([=] {
        const auto message = draftMessage(draft, DraftForm::Opened);
        const auto error = message
                               ? platform::FileManager::writeFileAtomically(file, message.value())
                               : std::optional(message.error());
        platform::mainQueue().async([=] {
            const auto self = weak.lock();
            if (!self) {
                return;
            }
            Attempts attempts;
            if (!error) {
                self->addFileComposers(attempts, file);
            }
            self->run(attempts, activation, done, [=] {
                done({false, {}, {}, error ? error->text : problem, {}});
            });
        });
    });
}

// Thunderbird also takes drafts that are too long for a command line.
void Clients::State::addFileComposers(Attempts& attempts, const std::string& file) const {
    for (const auto& program : {configuredProgram(), knownProgram(mailtoApplication())}) {
        if (program && program->client == Client::Thunderbird) {
            addAttempt(attempts, "thunderbird", openCommand(*program, file));
        }
    }
    addAttempt(attempts, std::string(kOwnWindow), Command{ownWindow(), "--draft", file});
}

Clients::Start Clients::systemStart() {
    return [](const Command& command, const Activation& activation, platform::ProcessReport done) {
        return platform::startProcess(command, activation, kStartLimit, std::move(done));
    };
}

Clients::Clients(Folders folders, Start start)
    : state_(std::make_shared<State>(std::move(folders), std::move(start))) {
    removeOldDrafts(state_->folders().drafts);
}

Clients::~Clients() = default;

void Clients::setOpen(const std::string& open) {
    state_->setOpen(open);
}

void Clients::show(const MailFile& message, const Activation& activation, const Done& done) {
    const ReplyHeader header = readReplyHeader(message.path);
    Attempts attempts;
    state_->addShowing(attempts, {message.path, message.folder, header.messageId});
    state_->run(std::move(attempts), activation, done, [done] {
        done({false, {}, {}, "no program can show the message", {}});
    });
}

// A program that shows the message can reply to it, too.
void Clients::reply(const MailFile& message, const Activation& activation, const Done& done) {
    const ReplyHeader header = readReplyHeader(message.path);
    Attempts attempts;
    state_->addReplies(attempts, header);
    state_->addShowing(attempts, {message.path, message.folder, header.messageId});
    state_->run(std::move(attempts), activation, done, [done] {
        done({false, {}, {}, "no program can reply to the message", {}});
    });
}

void Clients::compose(const ExtensionMessage& message,
                      const std::optional<std::string>& draftsFolder,
                      const std::optional<Activation>& activation,
                      const Done& done) {
    Draft draft = draftOf(message);
    const std::weak_ptr<State> weak = state_;
    platform::backgroundQueue().async([=, folders = state_->folders()]() mutable {
        const auto folder = newDraftFolder(folders.drafts);
        TakenFiles taken;
        if (folder) {
            taken = takeDraftFiles(draft.files, folders.data, folder.value(), kLockPatience);
        }
        draft.files = std::move(taken.files);
        platform::mainQueue().async([=] {
            const auto self = weak.lock();
            if (!self) {
                return;
            }
            if (!folder) {
                done({false, {}, {}, folder.error().text, draft.files});
                return;
            }
            const auto told = [done, leftOut = taken.leftOut](ClientOutcome outcome) {
                outcome.leftOut = leftOut;
                done(outcome);
            };
            self->composeWith(draft, folder.value(), draftsFolder, activation, told);
        });
    });
}

}  // namespace quillet::mailhost
