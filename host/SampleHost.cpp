#include "host/SampleHost.h"

#include <chrono>
#include <nlohmann/json.hpp>
#include <ostream>
#include <utility>

#include "host/MessageWindow.h"
#include "host/WindowActivation.h"
#include "model/HostInterface.h"
#include "platform/desktop/DistributedNotificationCenter.h"
#include "platform/desktop/Queues.h"

namespace quillet::host {

namespace {

double now() {
    const auto time = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration<double>(time).count();
}

const char* nameOf(Outcome::Kind kind) {
    switch (kind) {
        case Outcome::Kind::Ignored:
            return "ignored";
        case Outcome::Kind::Failed:
            return "failed";
        case Outcome::Kind::NotFound:
            return "not found";
        case Outcome::Kind::Removed:
            return "removed";
        case Outcome::Kind::Found:
            return "found";
        case Outcome::Kind::Received:
            return "received";
        case Outcome::Kind::Activated:
            return "activated";
    }
    return "";
}

// The URL of a draft is left out: it holds the bodies.
void addCommand(nlohmann::ordered_json& line, const std::string& url, const HostCommand& command) {
    if (command.draft) {
        line["command"] = command.word;
        return;
    }
    line["url"] = url;
    line["command"] = command.word;
    line["mail"] = command.account;
    line["messageid"] = command.identifier;
    line["folderstandardid"] = command.folderStandardId;
}

void addDraft(nlohmann::ordered_json& line, const Draft& draft) {
    line["subject"] = draft.subject;
    line["to"] = draft.to;
    line["cc"] = draft.cc;
    line["bcc"] = draft.bcc;
    line["attachments"] = draft.attachments.size();
}

Outcome outcomeOfCall(const Call& call) {
    Outcome outcome;
    outcome.kind = call.problem.empty() ? Outcome::Kind::Activated : Outcome::Kind::Ignored;
    outcome.reason = call.problem;
    return outcome;
}

}  // namespace

SampleHost::SampleHost(std::string dataFolder, MessageWindow* window, std::ostream& log)
    : dataFolder_(std::move(dataFolder)), window_(window), log_(log) {}

void SampleHost::receive(const Call& call) {
    Request request;
    request.time = now();
    request.call = call;
    const std::vector<std::string> urls = std::exchange(request.call.urls, {});
    if (urls.empty()) {
        waiting_.push_back(request);
    }
    for (std::size_t index = 0; index < urls.size(); ++index) {
        request.url = urls[index];
        request.command = readHostCommand(request.url);
        request.isLastOfCall = index + 1 == urls.size();
        waiting_.push_back(request);
    }
    startNext();
}

void SampleHost::whenIdle(std::function<void()> done) {
    whenIdle_ = std::move(done);
    startNext();
}

void SampleHost::startNext() {
    if (isBusy_) {
        return;
    }
    if (waiting_.empty()) {
        if (whenIdle_) {
            platform::mainQueue().async(std::exchange(whenIdle_, nullptr));
        }
        return;
    }
    isBusy_ = true;
    platform::backgroundQueue().async([this, request = std::move(waiting_.front())] {
        const Outcome outcome =
            request.command ? carryOut(*request.command, dataFolder_) : outcomeOfCall(request.call);
        platform::mainQueue().async([this, request, outcome] { finish(request, outcome); });
    });
    waiting_.pop_front();
}

SampleHost::Shown SampleHost::show(const Request& request, const Outcome& outcome) {
    const bool isActivation = outcome.kind == Outcome::Kind::Activated;
    const bool showsMessage =
        request.command && request.command->shows() && outcome.kind != Outcome::Kind::Ignored;
    if (window_ == nullptr || request.call.isInBackground || !(isActivation || showsMessage)) {
        return Shown::No;
    }
    if (showsMessage) {
        window_->present(*request.command, outcome);
    } else {
        window_->present();
    }
    if (!isActivation && !request.call.activation.isGiven()) {
        return Shown::Behind;
    }
    // The next block goes to the background queue later, so nobody reads the environment now.
    bringToFront(*window_, request.call.activation);
    return Shown::InFront;
}

void SampleHost::writeLine(const Request& request, const Outcome& outcome, Shown shown) {
    nlohmann::ordered_json line{{"time", request.time}, {"call", request.call.name}};
    if (request.command) {
        addCommand(line, request.url, *request.command);
    }
    line["background"] = request.call.isInBackground;
    line["token"] = request.call.activation.isGiven();
    line["outcome"] = nameOf(outcome.kind);
    if (!outcome.reason.empty()) {
        line["reason"] = outcome.reason;
    }
    if (outcome.kind == Outcome::Kind::Removed) {
        line["copies"] = outcome.copies;
    }
    if (outcome.draft) {
        addDraft(line, *outcome.draft);
    }
    line["shown"] = shown != Shown::No;
    line["front"] = shown == Shown::InFront;
    constexpr auto kReplace = nlohmann::ordered_json::error_handler_t::replace;
    log_ << line.dump(-1, ' ', false, kReplace) << std::endl;
}

void SampleHost::finish(const Request& request, const Outcome& outcome) {
    writeLine(request, outcome, show(request, outcome));
    // After a failure the widget shows what is still there.
    storeChanged_ = storeChanged_ || outcome.kind == Outcome::Kind::Removed ||
                    (outcome.kind == Outcome::Kind::Failed && !request.command->shows());
    if (request.isLastOfCall && std::exchange(storeChanged_, false)) {
        platform::DistributedNotificationCenter::defaultCenter().postNotification(
            kStoreNotificationName, kStoreNotificationObject);
    }
    isBusy_ = false;
    startNext();
}

}  // namespace quillet::host
