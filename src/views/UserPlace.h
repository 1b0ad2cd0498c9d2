#pragma once

#include <memory>

#include "model/ExtensionMessage.h"
#include "platform/ui/TableView.h"
#include "widget/TodayViewController.h"

namespace quillet {

// What the user has selected in a view tree and where the keyboard stands in it, to be carried over
// to the tree that takes its place. Main thread only.
class UserPlace {
public:
    // Of a controller whose view is still in its window.
    explicit UserPlace(const TodayViewController& widget);

    // For a controller whose view is in that window and has its rows. The selection and the
    // keyboard go to the same messages; nothing is sent to the host. A message that is gone leaves
    // no selection, and the keyboard where its row was, but on no other row's button.
    void restore(const TodayViewController& widget) const;

private:
    enum class Header { HasNoFocus, HasFocus, ShowsFocus };

    std::shared_ptr<ExtensionMessage> selected_;
    std::shared_ptr<ExtensionMessage> current_;  // the message that the keyboard stands on
    platform::TableView::Keyboard keyboard_;
    Header header_ = Header::HasNoFocus;
};

}  // namespace quillet
