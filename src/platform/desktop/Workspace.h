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
    AllowingClassicStartup = 0x20000,  // in the foreground
};

// A boolean entry of an `Open` request's platform data that tells the application to stay in the
// background. Such a request carries no activation token.
inline constexpr std::string_view kBackgroundEntry = "x-quillet-background";

// Hands URLs to other programs of the desktop session. Main thread only.
//
// An application is called on the session bus first, by the name that is its identifier, with
// org.freedesktop.Application.Open; the bus starts it if it can. If the bus does not know the name,
// or says later that nobody took the call, the command of the installed desktop entry
// IDENTIFIER.desktop is run. A request that waits for its application when the bus goes away is
// sent again when the bus is back. Requests in the foreground carry an activation token, except on
// Wayland, where the toolkit cannot make one.
class Workspace {
public:
    // The workspace of the program. Call this when the program starts, since an activation token
    // holds the time of the input that led to it. Never destroyed.
    static Workspace& sharedWorkspace();

    // Uses a connection of the caller's, which has to outlive the workspace.
    explicit Workspace(SessionBus& bus);
    ~Workspace();

    // Whether the session bus knows the application `identifier`, or it has a desktop entry.
    bool knowsApplication(std::string_view identifier);

    // Asks the application `identifier` to open `urls` and starts it if it does not run. Returns
    // true once the request is on its way, and false if no such application is known or `urls` is
    // empty. Never waits for the application itself.
    bool openURLs(std::span<const URL> urls, std::string_view identifier, LaunchOptions options);

    // Waits, before the program ends, until the applications have all requests: the bus drops a
    // request for an application that is still starting when the sender leaves. Returns false and
    // logs it if some are not handed over after `limit`; the default is as long as the bus waits
    // for an application to start.
    bool flush(std::chrono::milliseconds limit = std::chrono::minutes(2));

    // Whether any request found no application that took it. Each is logged when that happens.
    bool hasLostRequests() const noexcept;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
