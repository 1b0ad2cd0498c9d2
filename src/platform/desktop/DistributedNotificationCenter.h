#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace quillet::platform {

class SessionBus;

// Notifications between the processes of a desktop session: a broadcast signal on the session bus
// that carries a name and an object, both text. Main thread only; handlers run on the main thread,
// from its event loop. Without a session bus nothing is delivered and posting answers false; when
// the bus comes (back), observers are served again.
//
// Identical notifications that still wait for delivery are handed over as one.
class DistributedNotificationCenter {
public:
    using Handler = std::function<void(const std::string& name, const std::string& object)>;

    static DistributedNotificationCenter& defaultCenter();

    DistributedNotificationCenter();
    // On a connection of the caller's, which outlives the centre.
    explicit DistributedNotificationCenter(SessionBus& bus);
    ~DistributedNotificationCenter();
    DistributedNotificationCenter(const DistributedNotificationCenter&) = delete;
    DistributedNotificationCenter& operator=(const DistributedNotificationCenter&) = delete;

    // Calls `handler` for notifications of this name whose object is this text. `observer` only
    // names the registration.
    void addObserver(const void* observer,
                     std::string_view name,
                     std::string_view object,
                     Handler handler);
    void removeObserver(const void* observer);

    // True once the bus has the message, so that a program may exit right after. Waits for the
    // bus's answer, two seconds at most.
    bool postNotification(std::string_view name, std::string_view object);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
