#include "app/SingleUpdate.h"

#include "views/TodayWidgetFactory.h"
#include "widget/MessageList.h"

namespace quillet {

SingleUpdate::SingleUpdate(std::optional<std::int64_t> segment) : override_(segment) {
    if (override_) {
        volatileDefaults_.setInteger(*override_, MessageList::kSegmentedPreference);
    }
    controller_ =
        TodayViewController::make({blocks_, blocks_, defaults(), TodayWidgetFactory::shared()});
}

platform::UserDefaults& SingleUpdate::defaults() {
    if (override_) {
        return volatileDefaults_;
    }
    return platform::UserDefaults::standard();
}

std::int64_t SingleUpdate::segment() const {
    return controller_->defaults().integerForKey(MessageList::kSegmentedPreference);
}

NCUpdateResult SingleUpdate::run() {
    NCUpdateResult result = NCUpdateResultFailed;
    controller_->widgetPerformUpdateWithCompletionHandler(
        [&result](NCUpdateResult answer) { result = answer; });
    blocks_.runAll();
    return result;
}

}  // namespace quillet
