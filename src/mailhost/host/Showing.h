#pragma once

#include <functional>
#include <string>

#include "mailhost/clients/Clients.h"
#include "mailhost/host/CommandLog.h"
#include "mailhost/host/MailHost.h"

#include "model/HostCommand.h"
#include "platform/desktop/ApplicationService.h"

namespace quillet::mailhost {

// Follows the commands that show something, by the user's mail programs, and logs what came of
// them. Main thread only.
class Showing {
public:
    // The host has to outlive this. `drafted` is called from the event loop when a draft has gone
    // to a program or was stored.
    Showing(const MailHost& host,
            CommandLog log,
            std::function<void(const ClientOutcome& result)> drafted);

    // `message`: of open and reply. In the background no program is started: a message stays where
    // it is, and a draft goes to the Drafts folder.
    void show(const platform::ApplicationCall& call,
              const std::string& url,
              const HostCommand& command,
              const MailFile& message);

private:
    void showDraft(const platform::ApplicationCall& call,
                   const HostCommand& command,
                   const Clients::Done& done);

    const MailHost& host_;
    CommandLog log_;
    std::function<void(const ClientOutcome& result)> drafted_;
    Clients clients_;
};

}  // namespace quillet::mailhost
