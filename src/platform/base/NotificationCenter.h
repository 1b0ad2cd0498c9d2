#pragma once

#include <any>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace quillet::platform {

struct Notification {
    std::string name;
    std::any object;  // sent along by the poster; may be empty
};

// Notifications inside the process. Posting calls the observers of the name one by one on the
// posting thread, in the order of registration. No lock is held meanwhile: observers may post,
// register and remove. An observer that registers during a post is called from the next one on. Any
// thread.
class NotificationCenter {
public:
    using Handler = std::function<void(const Notification&)>;

    static NotificationCenter& defaultCenter();

    // `observer` only identifies the registration for removeObserver.
    void addObserver(const void* observer, std::string_view name, Handler handler);
    // Drops all registrations of the observer. From then on this thread does not call it, even in
    // the middle of a post.
    void removeObserver(const void* observer);
    void postNotification(std::string_view name, std::any object = {});

private:
    struct Registration;

    std::mutex mutex_;
    std::vector<std::shared_ptr<Registration>> registrations_;
};

}  // namespace quillet::platform
