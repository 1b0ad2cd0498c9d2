#pragma once

#include <memory>

#include "platform/desktop/UserDefaults.h"
#include "views/FlippedView.h"
#include "widget/TodayViewController.h"

namespace quillet {

namespace platform {
class SegmentedControl;
}

// The strip above the messages: a switch between "Inbox", "To Do" and "Memo". It stores the user's
// choice in the preference "segmented", as index plus one. Main thread only.
class TodayHeaderView final : public FlippedView {
public:
    // Shows the stored choice, or "Inbox" if none of the three is stored. Refers to the
    // controller's preferences, which must outlive the view.
    explicit TodayHeaderView(const std::shared_ptr<TodayViewController>& controller,
                             QWidget* parent = nullptr);

    platform::SegmentedControl* control() const noexcept { return control_; }  // owned by the view

    // Told when the user has chosen a segment. Weak, like the controller, because the controller
    // owns the header.
    std::shared_ptr<TodayViewController> delegate() const { return delegate_.lock(); }
    void setDelegate(const std::shared_ptr<TodayViewController>& delegate) { delegate_ = delegate; }
    std::shared_ptr<TodayViewController> controller() const { return controller_.lock(); }
    void setController(const std::shared_ptr<TodayViewController>& controller) {
        controller_ = controller;
    }

    // The control's action.
    void selectedSegment(platform::SegmentedControl* sender);
    // Stores the selection, then tells the delegate.
    void select();

private:
    platform::SegmentedControl* control_;
    platform::UserDefaults& defaults_;
    std::weak_ptr<TodayViewController> delegate_;
    std::weak_ptr<TodayViewController> controller_;
};

}  // namespace quillet
