#pragma once

#include <chrono>
#include <memory>
#include <span>
#include <string_view>

#include "platform/url/URL.h"

namespace quillet::platform {

class SessionBus;

// How an application is asked to open URLs.
enum class LaunchOptions : unsigned {
    WithoutActivation = 0x200,         // in the background
    AllowingClassicStartup = 0x20000,  // in the foreground: it comes to the front
};

// The entry of an `Open` request's platform data, a boolean, that tells the application to stay in
// the background. Such a request carries no activation token either.
inline constexpr std::string_view kBackgroundEntry = "x-quillet-background";

// Hands URLs to other programs of the desktop session. Main thread only.
//
// An application is first sought on the session bus, by the name that is its identifier, running or
// to be started by the bus, and asked by org.freedesktop.Application.Open. Where the bus does not
// know the name, or says later that nobody took the call, the command of the installed desktop
// entry IDENTIFIER.desktop is run. A request that waits for its application when the bus goes away
// is sent again when the bus is back. Requests in the foreground carry an activation token, except
// on Wayland, where the toolkit has none to give.
class Workspace {
public:
    // The one of the program, which should be made when the program starts: an activation token
    // tells the time of the input that led to it. Never destroyed.
    static Workspace& sharedWorkspace();

    // On a connection of the caller's, which outlives the workspace.
    explicit Workspace(SessionBus& bus);
    ~Workspace();
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    // Whether the session bus knows the application `identifier`, or it has a desktop entry.
    bool knowsApplication(std::string_view identifier);

    // Asks the application `identifier` to open `urls`, starting it where it does not run. True
    // once the request is on its way; false at once where no such application is known, and for no
    // URLs. Never waits for the application itself.
    bool openURLs(std::span<const URL> urls, std::string_view identifier, LaunchOptions options);

    // Before the program ends: waits until the applications have all requests, since the bus
    // forgets a request for one that still starts when the sender leaves. False where some are not
    // handed over after `limit`, which is logged; the default is as long as the bus waits for an
    // application to start.
    bool flush(std::chrono::milliseconds limit = std::chrono::minutes(2));

    // Whether a request that was on its way found no application that took it, which is logged.
    bool hasLostRequests() const noexcept;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
