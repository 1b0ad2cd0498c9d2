#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace quillet::platform {

class SessionBus;

// Notifications between the processes of a desktop session: a broadcast signal on the session bus
// that carries a name and an object, both text. Main thread only; handlers are called from its
// event loop. Without a session bus nothing is delivered and posting returns false; observers are
// served again when the bus comes (back).
//
// Identical notifications that still wait for delivery are delivered as one.
class DistributedNotificationCenter {
public:
    using Handler = std::function<void(const std::string& name, const std::string& object)>;

    static DistributedNotificationCenter& defaultCenter();

    // Uses a connection of the caller's, which has to outlive the centre.
    explicit DistributedNotificationCenter(SessionBus& bus);
    ~DistributedNotificationCenter();

    // Calls `handler` for notifications of this name with this object. `observer` only names the
    // registration.
    void addObserver(const void* observer,
                     std::string_view name,
                     std::string_view object,
                     Handler handler);
    void removeObserver(const void* observer);

    // Returns true once the bus has the message, so that a program may exit right after. Waits at
    // most two seconds for the bus's answer.
    bool postNotification(std::string_view name, std::string_view object);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
