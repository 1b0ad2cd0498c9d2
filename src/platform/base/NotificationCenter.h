#pragma once

#include <any>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace quillet::platform {

struct Notification {
    std::string name;
    std::any object;  // whatever the poster sends along; empty for none
};

// Notifications inside the process. Posting calls every observer of the name synchronously, on
// the posting thread, in the order of registration, without holding a lock: observers may post,
// register and remove. Who registers while a notification is being posted is called from the next
// one on. Any thread.
class NotificationCenter {
public:
    using Handler = std::function<void(const Notification&)>;

    static NotificationCenter& defaultCenter();

    NotificationCenter();
    ~NotificationCenter();
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    // `observer` only names the registration, for removeObserver.
    void addObserver(const void* observer, std::string_view name, Handler handler);
    // Drops every registration of the observer. An observer removed while a notification is being
    // posted is not called any more by the posting thread.
    void removeObserver(const void* observer);
    void postNotification(std::string_view name, std::any object = {});

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
