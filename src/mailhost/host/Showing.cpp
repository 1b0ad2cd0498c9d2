#include "mailhost/host/Showing.h"

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "handoff/MessageUrl.h"
#include "model/ContainerPaths.h"
#include "model/HostInterface.h"
#include "platform/base/Exception.h"
#include "platform/base/Log.h"

namespace quillet::mailhost {

namespace {

std::string cacheFolder() {
    const char* const given = std::getenv("XDG_CACHE_HOME");
    const std::string folder = given == nullptr ? "" : given;
    return folder.starts_with('/') ? folder : UserFolders::ofEnvironment().home + "/.cache";
}

// The programs of this package lie in one folder.
Clients::Folders clientFolders() {
    std::error_code ignored;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return {ExtensionUtilities::GroupDataPath().value_or(""),
            cacheFolder() + "/quillet/drafts",
            program.parent_path().string()};
}

Outcome outcomeOf(const ClientOutcome& result) {
    Outcome outcome = Outcome::of(Outcome::Kind::Failed, result.reason);
    if (result.isShown) {
        outcome = Outcome::of(Outcome::Kind::Shown);
        outcome.client = result.client;
    } else if (!result.storedAt.empty()) {
        outcome = Outcome::of(Outcome::Kind::Stored);
        outcome.target = result.storedAt;
    }
    return outcome;
}

}  // namespace

Showing::Showing(const MailHost& host,
                 CommandLog log,
                 std::function<void(const ClientOutcome& result)> drafted)
    : host_(host),
      log_(log),
      drafted_(std::move(drafted)),
      clients_(clientFolders(), Clients::systemStart()) {}

void Showing::show(const platform::ApplicationCall& call,
                   const std::string& url,
                   const HostCommand& command,
                   const MailFile& message) {
    const auto done = [this, call, url, command](const ClientOutcome& result) {
        const Outcome outcome = outcomeOf(result);
        if (outcome.kind == Outcome::Kind::Failed) {
            platform::Log::write("MailHost %@: %@", {command.word, outcome.reason});
        }
        log_.writeCommand(call, url, command, outcome);
        if (command.draft) {
            drafted_(result);
        }
    };
    clients_.setOpen(host_.open());
    if (command.draft) {
        showDraft(call, command, done);
    } else if (call.isInBackground) {
        log_.writeCommand(call, url, command, Outcome::of(Outcome::Kind::Found));
    } else if (command.word == ExtensionUtilities::commandReply) {
        clients_.reply(message, call.activation, done);
    } else {
        clients_.show(message, call.activation, done);
    }
}

void Showing::showDraft(const platform::ApplicationCall& call,
                        const HostCommand& command,
                        const Clients::Done& done) {
    try {
        const auto draft = ExtensionMessageWithUrl(*command.draft);
        clients_.compose(*draft,
                         host_.draftsFolder(draft->account().value_or("")),
                         call.isInBackground ? std::nullopt : std::optional(call.activation),
                         done);
    } catch (const platform::Exception& exception) {
        done({false, {}, {}, exception.description(), {}});
    }
}

}  // namespace quillet::mailhost
