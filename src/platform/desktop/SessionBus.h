#pragma once

#include <functional>
#include <memory>
#include <string>

namespace quillet::platform {

// A connection to the session bus. Never starts a bus; finds it by DBUS_SESSION_BUS_ADDRESS, else
// as $XDG_RUNTIME_DIR/bus. A lost connection is made anew as soon as there is a bus again. Making
// one waits for the bus's welcome: for long where a bus lets programs in and never answers, which
// no program of such a session is spared. Main thread only.
class SessionBus {
public:
    // The one that the services of this folder share.
    static SessionBus& shared();

    // Keeps the libraries of this process from starting a bus where the environment names none: it
    // names from now on the one that would be found, or none at all. Before any thread is started.
    static void settleAddress();
    // Whether the environment names a bus by settleAddress() only, which is no matter of the
    // programs that are started from here.
    static bool isAddressSettled();

    SessionBus();
    ~SessionBus();
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    // The name under which the toolkit knows the connection, which is made where there is none;
    // "" while there is no bus.
    std::string connectionName();

    // True once the bus has everything that was sent before, so that the sender may leave. Waits
    // for the bus's answer, two seconds at most.
    bool flush();

    // Calls `connected`, from the event loop or from connectionName(), whenever the bus was lost or
    // missing and is there now. `observer` only names the registration.
    void addObserver(const void* observer, std::function<void()> connected);
    void removeObserver(const void* observer);

private:
    class State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
