#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "mailhost/clients/ClientCommands.h"

#include "model/ExtensionMessage.h"
#include "platform/desktop/ApplicationService.h"
#include "platform/desktop/ProcessStart.h"

namespace quillet::mailhost {

// What came of asking mail programs.
struct ClientOutcome {
    bool isShown = false;
    std::string client;                // of what is shown: the program's name
    std::string storedAt;              // of a draft that was saved instead: the path of its message
    std::string reason;                // of what is neither: a sentence
    std::vector<std::string> leftOut;  // files of a draft that could not be taken
};

// A message file and its mail folder.
struct MailFile {
    std::string path;
    std::string folder;
};

// Hands messages, replies and drafts to the user's mail program: the configured one, else those
// that the desktop has for mail, in the order of docs/mail-host.md. One that cannot be started, or
// fails within ten seconds, makes room for the next. Programs get the activation of the call. Main
// thread only; files are copied on the background queue.
class Clients {
public:
    using Done = std::function<void(const ClientOutcome& outcome)>;
    // Starts a command and calls `done` once, as platform::startProcess() does.
    using Start = std::function<platform::ProcessHandle(const Command& command,
                                                        const platform::Activation& activation,
                                                        platform::ProcessReport done)>;

    struct Folders {
        std::string data;    // the data folder of the container
        std::string drafts;  // the host's own, for files of drafts; made when it is needed
        // Where quillet-message lies if it is not on PATH.
        std::string programs;
    };

    // Starts programs of this computer.
    static Start systemStart();

    // Removes what is left of old drafts.
    Clients(Folders folders, Start start);
    // No call of `done` comes any more.
    ~Clients();

    // The configuration's "open", from now on. Until then it is "auto".
    void setOpen(const std::string& open);

    void show(const MailFile& message, const platform::Activation& activation, const Done& done);
    void reply(const MailFile& message, const platform::Activation& activation, const Done& done);
    // `draftsFolder`: the mail folder that takes the draft if no program does. In the background
    // (`activation` is none) it goes there at once.
    void compose(const ExtensionMessage& message,
                 const std::optional<std::string>& draftsFolder,
                 const std::optional<platform::Activation>& activation,
                 const Done& done);

private:
    class State;
    std::shared_ptr<State> state_;
};

}  // namespace quillet::mailhost
