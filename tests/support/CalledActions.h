#pragma once

#include <any>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/base/NotificationCenter.h"
#include "widget/HostCommands.h"

namespace quillet::test {

// Records the actions that are announced in the process during the scope, as "command identifier"
// with the message's identifier.
class CalledActions {
public:
    explicit CalledActions(std::function<void()> whenCalled = [] {}) {
        platform::NotificationCenter::defaultCenter().addObserver(
            this,
            ExtensionUtilities::kActionCalledNotification,
            [this, whenCalled = std::move(whenCalled)](const platform::Notification& called) {
                const auto action = std::any_cast<ExtensionUtilities::CalledAction>(called.object);
                names_.push_back(action.command + " " + action.message->messageId().value_or(""));
                whenCalled();
            });
    }
    ~CalledActions() { platform::NotificationCenter::defaultCenter().removeObserver(this); }
    CalledActions(const CalledActions&) = delete;
    CalledActions& operator=(const CalledActions&) = delete;

    const std::vector<std::string>& names() const { return names_; }

private:
    std::vector<std::string> names_;
};

}  // namespace quillet::test
