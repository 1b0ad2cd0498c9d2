#include "views/UserPlace.h"

#include "platform/ui/SegmentedControl.h"
#include "views/TodayHeaderView.h"
#include "views/TodayTableView.h"
#include "views/TodayTableViewCell.h"

namespace quillet {

namespace {

using platform::Table;

TodayTableView& tableOf(const TodayViewController& widget) {
    return static_cast<TodayTableView&>(*widget.myTableView());
}

// Asks the cell, because a row that is about to slide out is no longer in any list.
std::shared_ptr<ExtensionMessage> messageAt(const TodayTableView& table, std::ptrdiff_t row) {
    const auto* cell =
        static_cast<const TodayTableViewCell*>(table.cellAtRow(static_cast<std::size_t>(row)));
    return cell != nullptr ? cell->message() : nullptr;
}

std::ptrdiff_t rowOf(const TodayTableView& table, const ExtensionMessage* message) {
    const auto rows = static_cast<std::ptrdiff_t>(table.numberOfRows());
    for (std::ptrdiff_t row = 0; message != nullptr && row < rows; ++row) {
        if (const auto shown = messageAt(table, row); shown && shown->isEqual(message)) {
            return row;
        }
    }
    return Table::kNoRow;
}

}  // namespace

UserPlace::UserPlace(const TodayViewController& widget) {
    const TodayTableView& table = tableOf(widget);
    keyboard_ = table.keyboard();
    selected_ = messageAt(table, table.selectedRow());
    current_ = messageAt(table, keyboard_.row);
    const platform::SegmentedControl* control = widget.myHeaderView()->control();
    if (control->isAncestorOf(control->window()->focusWidget())) {
        header_ = control->showsFocus() ? Header::ShowsFocus : Header::HasFocus;
    }
}

void UserPlace::restore(const TodayViewController& widget) const {
    TodayTableView& table = tableOf(widget);
    table.setSelectedRow(rowOf(table, selected_.get()));
    platform::TableView::Keyboard keyboard = keyboard_;
    if (const std::ptrdiff_t row = rowOf(table, current_.get()); row != Table::kNoRow) {
        keyboard.row = row;
    } else {
        keyboard.control = Table::kNoRow;
    }
    table.setKeyboard(keyboard);
    if (header_ != Header::HasNoFocus) {
        platform::SegmentedControl* control = widget.myHeaderView()->control();
        control->setFocus(Qt::OtherFocusReason);
        control->setShowsFocus(header_ == Header::ShowsFocus);
    }
}

}  // namespace quillet
