#pragma once

#include <functional>
#include <memory>
#include <string>

namespace quillet::platform {

// The one connection to the session bus that the services of this folder share. Never starts a
// bus. A lost connection is made anew as soon as there is a bus again. Main thread only.
class SessionBus {
public:
    static SessionBus& shared();

    // The name under which the toolkit knows the connection, which is made where there is none;
    // "" while there is no bus.
    std::string connectionName();

    // Calls `connected`, from the event loop or from connectionName(), whenever a bus was lost or
    // missing and is there now. `observer` only names the registration.
    void addObserver(const void* observer, std::function<void()> connected);
    void removeObserver(const void* observer);

    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

private:
    SessionBus();
    ~SessionBus();
    class State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
