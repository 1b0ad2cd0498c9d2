#include "platform/base/NotificationCenter.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <utility>

namespace quillet::platform {

struct NotificationCenter::Registration {
    const void* observer;
    std::string name;
    Handler handler;
    std::atomic<bool> removed{false};

    Registration(const void* who, std::string_view what, Handler how)
        : observer(who), name(what), handler(std::move(how)) {}
};

NotificationCenter& NotificationCenter::defaultCenter() {
    // Never destroyed: static observers may still remove themselves at the end of the program.
    static auto* const center = new NotificationCenter;
    return *center;
}

void NotificationCenter::addObserver(const void* observer, std::string_view name, Handler handler) {
    auto registration = std::make_shared<Registration>(observer, name, std::move(handler));
    const std::lock_guard lock(mutex_);
    registrations_.push_back(std::move(registration));
}

void NotificationCenter::removeObserver(const void* observer) {
    // The handlers are destroyed without the lock: what they hold may call this center.
    std::vector<std::shared_ptr<Registration>> dropped;
    const std::lock_guard lock(mutex_);
    std::erase_if(registrations_, [&](const auto& registration) {
        if (registration->observer != observer) {
            return false;
        }
        registration->removed = true;
        dropped.push_back(registration);
        return true;
    });
}

void NotificationCenter::postNotification(std::string_view name, std::any object) {
    std::vector<std::shared_ptr<Registration>> called;
    {
        const std::lock_guard lock(mutex_);
        std::copy_if(registrations_.begin(),
                     registrations_.end(),
                     std::back_inserter(called),
                     [=](const auto& registration) { return registration->name == name; });
    }
    const Notification notification{std::string(name), std::move(object)};
    for (const auto& registration : called) {
        if (!registration->removed) {
            registration->handler(notification);
        }
    }
}

}  // namespace quillet::platform
