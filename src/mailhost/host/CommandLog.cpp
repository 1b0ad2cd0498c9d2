#include "mailhost/host/CommandLog.h"

#include <chrono>
#include <nlohmann/json.hpp>
#include <ostream>

namespace quillet::mailhost {

namespace {

using Line = nlohmann::ordered_json;

Line lineOfNow() {
    const auto time = std::chrono::system_clock::now().time_since_epoch();
    return {{"time", std::chrono::duration<double>(time).count()}};
}

const char* nameOf(Outcome::Kind kind) {
    switch (kind) {
        case Outcome::Kind::Ignored:
            return "ignored";
        case Outcome::Kind::Failed:
            return "failed";
        case Outcome::Kind::NotFound:
            return "not found";
        case Outcome::Kind::Found:
            return "found";
        case Outcome::Kind::Moved:
            return "moved";
        case Outcome::Kind::Shown:
            return "shown";
        case Outcome::Kind::Stored:
            return "stored";
    }
    return "";
}

// The URL of a draft is left out: it holds the bodies.
void addNamesOfCommand(Line& line, const std::string& url, const HostCommand& command) {
    if (!command.draft) {
        line["url"] = url;
    }
    line["command"] = command.word;
    if (!command.draft) {
        line["mail"] = command.account;
        line["messageid"] = command.identifier;
        line["folderstandardid"] = command.folderStandardId;
    }
}

void addActivation(Line& line, const platform::ApplicationCall& call) {
    line["background"] = call.isInBackground;
    line["token"] = call.activation.isGiven();
}

void write(std::ostream& out, const Line& line) {
    out << line.dump(-1, ' ', false, Line::error_handler_t::replace) << std::endl;
}

}  // namespace

void CommandLog::writeCommand(const platform::ApplicationCall& call,
                              const std::string& url,
                              const HostCommand& command,
                              const Outcome& outcome) {
    if (out_ == nullptr) {
        return;
    }
    Line line = lineOfNow();
    line["call"] = call.name;
    addNamesOfCommand(line, url, command);
    addActivation(line, call);
    line["outcome"] = nameOf(outcome.kind);
    if (!outcome.reason.empty()) {
        line["reason"] = outcome.reason;
    }
    if (!outcome.target.empty()) {
        line["target"] = outcome.target;
    }
    if (!outcome.client.empty()) {
        line["client"] = outcome.client;
    }
    write(*out_, line);
}

void CommandLog::writeUndone(const UndoList::Undone& undone) {
    if (out_ == nullptr) {
        return;
    }
    Line line = lineOfNow();
    line["call"] = "undo";
    line["mail"] = undone.account;
    line["outcome"] = nameOf(undone.file ? Outcome::Kind::Moved : Outcome::Kind::Failed);
    if (undone.file) {
        line["target"] = undone.file.value();
    } else {
        line["reason"] = undone.file.error().description();
    }
    write(*out_, line);
}

void CommandLog::writeCall(const platform::ApplicationCall& call) {
    if (out_ == nullptr) {
        return;
    }
    Line line = lineOfNow();
    line["call"] = call.name;
    addActivation(line, call);
    line["outcome"] = call.problem.empty() ? "activated" : "ignored";
    if (!call.problem.empty()) {
        line["reason"] = call.problem;
    }
    write(*out_, line);
}

void CommandLog::writeChanges(const ContainerWriter::Changes& changes) {
    if (out_ == nullptr) {
        return;
    }
    for (const std::string& file : changes.files) {
        Line line = lineOfNow();
        line["changed"] = file;
        write(*out_, line);
    }
}

}  // namespace quillet::mailhost
