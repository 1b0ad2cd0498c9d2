#pragma once

#include <functional>
#include <memory>

class QDBusConnection;

namespace quillet::platform {

// A connection to the session bus, which is found at DBUS_SESSION_BUS_ADDRESS, else at
// $XDG_RUNTIME_DIR/bus, and never started. A lost connection is made again as soon as there is a
// bus. Connecting waits for the bus's welcome, for long if a bus lets programs in and never
// answers. Main thread only.
class SessionBus {
public:
    // The connection that all services of the program share.
    static SessionBus& shared();

    // Keeps the libraries of this process from starting a bus if the environment names none: from
    // now on it names the bus that would be found, or "disabled:". Call it before any thread
    // starts.
    static void settleAddress();
    // Whether the environment names a bus only because of settleAddress(). Programs that are
    // started from here should not see it then.
    static bool isAddressSettled();

    SessionBus();
    ~SessionBus();

    // The connection, which is made if it is missing; not connected while there is no bus. Each
    // connection has a name of its own.
    QDBusConnection connection();

    // Returns true once the bus has everything that was sent before, so that the sender may leave.
    // Waits at most two seconds for the bus's answer.
    bool flush();

    // Calls `connected`, from the event loop or from connection(), whenever the bus was lost or
    // missing and is there now. `observer` only names the registration.
    void addObserver(const void* observer, std::function<void()> connected);
    void removeObserver(const void* observer);

private:
    class State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
