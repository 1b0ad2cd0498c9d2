#include "platform/base/NotificationCenter.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace quillet::platform {

namespace {

struct Registration {
    const void* observer;
    std::string name;
    NotificationCenter::Handler handler;
    std::atomic<bool> removed{false};

    Registration(const void* who, std::string_view what, NotificationCenter::Handler how)
        : observer(who), name(what), handler(std::move(how)) {}
};

}  // namespace

struct NotificationCenter::State {
    std::mutex mutex;
    std::vector<std::shared_ptr<Registration>> registrations;
};

NotificationCenter& NotificationCenter::defaultCenter() {
    // Never destroyed: observers with static lifetime may still remove themselves at the end.
    static auto* const center = new NotificationCenter;
    return *center;
}

NotificationCenter::NotificationCenter() : state_(std::make_unique<State>()) {}

NotificationCenter::~NotificationCenter() = default;

void NotificationCenter::addObserver(const void* observer, std::string_view name, Handler handler) {
    auto registration = std::make_shared<Registration>(observer, name, std::move(handler));
    const std::lock_guard lock(state_->mutex);
    state_->registrations.push_back(std::move(registration));
}

void NotificationCenter::removeObserver(const void* observer) {
    // The handlers end outside the lock, since what they hold may come back here.
    std::vector<std::shared_ptr<Registration>> dropped;
    const std::lock_guard lock(state_->mutex);
    std::erase_if(state_->registrations, [&](const std::shared_ptr<Registration>& registration) {
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
        const std::lock_guard lock(state_->mutex);
        for (const auto& registration : state_->registrations) {
            if (registration->name == name) {
                called.push_back(registration);
            }
        }
    }
    const Notification notification{std::string(name), std::move(object)};
    for (const auto& registration : called) {
        if (!registration->removed) {
            registration->handler(notification);
        }
    }
}

}  // namespace quillet::platform
