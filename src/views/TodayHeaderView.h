#pragma once

#include <memory>

#include "platform/desktop/UserDefaults.h"
#include "views/FlippedView.h"
#include "widget/TodayViewController.h"

namespace quillet {

namespace platform {
class SegmentedControl;
}

// The strip above the messages: a switch between "Inbox", "To Do" and "Memo", which keeps the
// user's choice under the preference "segmented" (index plus one). Main thread only.
class TodayHeaderView final : public FlippedView {
public:
    // Shows the stored choice, or "Inbox" where none of the three is stored. Keeps the
    // controller's preferences, which outlive it.
    explicit TodayHeaderView(const std::shared_ptr<TodayViewController>& controller,
                             QWidget* parent = nullptr);

    platform::SegmentedControl* control() const noexcept { return control_; }  // owned by the view

    // Told when the user has chosen a segment. Weak, as the controller is: the controller owns the
    // header, and a strong pointer back would keep both for ever.
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
