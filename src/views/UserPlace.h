#pragma once

#include <memory>

#include "model/ExtensionMessage.h"
#include "platform/ui/TableView.h"
#include "widget/TodayViewController.h"

namespace quillet {

// The selection and the keyboard's place in a view tree, to be carried over to the tree that
// replaces it. Main thread only.
class UserPlace {
public:
    // Takes the place in the view of a controller, which must still be in its window.
    explicit UserPlace(const TodayViewController& widget);

    // Restores it in a controller's view that is in that window and has its rows. The selection and
    // the keyboard go to the same messages; nothing is sent to the host. If the selected message is
    // gone, nothing is selected. If the one with the keyboard is gone, the keyboard stays where its
    // row was, but not on another row's button.
    void restore(const TodayViewController& widget) const;

private:
    enum class Header { HasNoFocus, HasFocus, ShowsFocus };

    std::shared_ptr<ExtensionMessage> selected_;
    std::shared_ptr<ExtensionMessage> current_;  // the message of the keyboard's row
    platform::TableView::Keyboard keyboard_;
    Header header_ = Header::HasNoFocus;
};

}  // namespace quillet
