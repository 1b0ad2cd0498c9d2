#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quillet::platform {

class SessionBus;

// Notices that the desktop's notification service shows. Nothing here waits for the service: it is
// asked what it can do before the first notice, which starts it if the bus knows one. Without a
// service nothing is shown. Main thread only.
class Notifications {
public:
    // A notice by the number that notify() gave it; never 0.
    using Id = std::uint64_t;

    struct Action {
        std::string key;  // "default": a click on the notice itself
        std::string label;
    };
    // Texts are plain UTF-8, also where the service reads markup.
    struct Notice {
        std::string summary;  // one line
        std::string body;
        std::vector<Action> actions;  // left out if the service has none
        std::string category;         // of the service's list, as "email.arrived"; may be empty
    };
    // The program as the service names it: its name and icon, and its desktop entry without
    // ".desktop".
    struct Sender {
        std::string name;
        std::string icon;
        std::string desktopEntry;
    };
    // Called from the event loop. `token` is the permission to come to the front; may be empty.
    using Invoked =
        std::function<void(Id notice, const std::string& key, const std::string& token)>;
    // A notice is no longer shown, or could not be shown at all. Not called after close().
    using Closed = std::function<void(Id notice)>;

    // The bus has to outlive the notices, which stay on the screen when this object goes.
    Notifications(SessionBus& bus, Sender sender, Invoked invoked, Closed closed);
    ~Notifications();

    // Shows a notice and returns its number. It takes the place of `replaces`, and its number, if
    // that one is still shown.
    Id notify(Notice notice, Id replaces = 0);
    // Does nothing if the notice is not shown any more.
    void close(Id notice);

private:
    class State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
