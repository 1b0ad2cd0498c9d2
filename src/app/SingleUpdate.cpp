#include "app/SingleUpdate.h"

#include "views/TodayWidgetFactory.h"
#include "widget/MessageList.h"

namespace quillet {

SingleUpdate::SingleUpdate(std::optional<std::int64_t> segment) {
    if (segment) {
        volatileDefaults_.setInteger(*segment, MessageList::kSegmentedPreference);
    }
    platform::UserDefaults& defaults =
        segment ? volatileDefaults_ : platform::UserDefaults::standard();
    controller_ =
        TodayViewController::make({blocks_, blocks_, defaults, TodayWidgetFactory::shared()});
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
