// The mouse and the keyboard in a table.

#include <QAbstractButton>
#include <QApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollArea>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "platform/ui/Accessibility.h"
#include "platform/ui/TableView.h"
#include "platform/ui/TableViewState.h"

namespace quillet::platform {

std::ptrdiff_t TableView::rowAt(QPoint point) const {
    for (std::size_t i = 0; i < state_->rows.size(); ++i) {
        if (rect().contains(point) && state_->rows[i].view->geometry().contains(point)) {
            return static_cast<std::ptrdiff_t>(i);
        }
    }
    return kNoRow;
}

void TableView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const std::ptrdiff_t row = rowAt(event->position().toPoint());
    state_->pressed = standsStill(row) ? row : kNoRow;
    state_->keyboardUsed = false;
    updateKeyboardMark();
}

// A row is selected by the release, so that a user can take a press back by moving away.
void TableView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const std::ptrdiff_t pressed = std::exchange(state_->pressed, kNoRow);
    if (pressed != kNoRow && pressed == rowAt(event->position().toPoint())) {
        setCurrentRow(pressed);
        clickRow(static_cast<std::size_t>(pressed));
    }
}

std::ptrdiff_t TableView::currentRow() const {
    return state_->current;
}

void TableView::setCurrentRow(std::ptrdiff_t row) {
    state_->current = row;
    updateKeyboardMark();
    scrollToKeyboard();
    state_->announcement->start();
}

// Tells screen readers which row is current, unless they know.
void TableView::announceCurrentRow() {
    TableRowView* view = rowViewAtRow(static_cast<std::size_t>(state_->current));
    if (view != nullptr && hasFocus() && view != state_->announced) {
        state_->announced = view;
        tellScreenReaders(view, QAccessible::Focus);
    }
}

TableView::Keyboard TableView::keyboard() const {
    const std::ptrdiff_t control = controlNumber(focusedControl());
    return {.row = state_->current,
            .control = control,
            .hasFocus = control != kNoRow || window()->focusWidget() == this,
            .isShown = state_->keyboardUsed};
}

void TableView::setKeyboard(const Keyboard& keyboard) {
    state_->keyboardUsed = keyboard.isShown;
    setCurrentRow(std::min(keyboard.row, state_->lastRow()));
    if (keyboard.hasFocus && !focusControl(keyboard.row, keyboard.control, Qt::OtherFocusReason)) {
        setFocus(Qt::OtherFocusReason);
    }
}

void TableView::updateKeyboardMark() {
    const bool shown = state_->keyboardUsed && hasFocus();
    for (std::size_t i = 0; i < state_->rows.size(); ++i) {
        const bool current = static_cast<std::ptrdiff_t>(i) == state_->current;
        state_->rows[i].view->setKeyboardMark(shown && current);
    }
}

void TableView::noteReason(Qt::FocusReason reason) {
    state_->keyboardUsed = state_->keyboardUsed || isByKeyboard(reason);
}

QVariant TableView::inputMethodQuery(Qt::InputMethodQuery query) const {
    if (query != Qt::ImCursorRectangle || !state_->hasRow(state_->current)) {
        return QWidget::inputMethodQuery(query);
    }
    // The final place of a row that moves.
    const double top = static_cast<double>(state_->current) * state_->rowHeight;
    return QRectF(0, top, width(), state_->rowHeight).toAlignedRect();
}

// Makes the current row visible if the table lies in a scroll area. Mouse users scroll themselves.
void TableView::scrollToKeyboard() {
    const bool keyboardIsHere = window()->focusWidget() == this || focusedControl() != nullptr;
    if (!state_->keyboardUsed || !keyboardIsHere) {
        return;
    }
    for (QWidget* view = parentWidget(); view != nullptr; view = view->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(view)) {
            area->ensureWidgetVisible(this);
        }
    }
}

// The row that a key leads to from the current one, or kNoRow.
std::ptrdiff_t TableView::rowForKey(int key) const {
    const std::ptrdiff_t last = state_->lastRow();
    switch (key) {
        case Qt::Key_Up:
            return std::max<std::ptrdiff_t>(state_->current - 1, std::min<std::ptrdiff_t>(0, last));
        case Qt::Key_Down:
            return std::min(state_->current + 1, last);
        case Qt::Key_Home:
            return std::min<std::ptrdiff_t>(0, last);
        case Qt::Key_End:
            return last;
        default:
            return kNoRow;
    }
}

void TableView::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    const bool selects = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space;
    const std::ptrdiff_t row = selects ? state_->current : rowForKey(key);
    if (row == kNoRow) {
        QWidget::keyPressEvent(event);
        return;
    }
    state_->keyboardUsed = true;
    if (selects) {
        // A repeat is a key that is held down since it pressed a button of a row that is gone.
        if (!event->isAutoRepeat()) {
            clickRow(static_cast<std::size_t>(row));
        }
        return;
    }
    // Arrows lead from a control of a cell to the same control of another row.
    const std::ptrdiff_t control = controlNumber(focusedControl());
    setCurrentRow(row);
    focusControl(row, control, Qt::OtherFocusReason);
}

void TableView::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    noteReason(event->reason());
    state_->announced.clear();
    if (state_->current == kNoRow) {
        state_->current = state_->selected != kNoRow
                              ? state_->selected
                              : std::min<std::ptrdiff_t>(0, state_->lastRow());
    }
    setCurrentRow(state_->current);
}

void TableView::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    updateKeyboardMark();
}

std::vector<QWidget*> TableView::controlsOfRow(std::size_t row) const {
    TableCellView* cell = cellAtRow(row);
    if (cell == nullptr) {
        return {};
    }
    std::vector<QWidget*> controls;
    for (QWidget* child : cell->findChildren<QWidget*>()) {
        if ((child->focusPolicy() & Qt::TabFocus) != 0 && child->isVisibleTo(cell) &&
            child->isEnabled()) {
            controls.push_back(child);
        }
    }
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    std::stable_sort(controls.begin(), controls.end(), [=](QWidget* a, QWidget* b) {
        const QPoint first = a->mapTo(cell, QPoint());
        const QPoint second = b->mapTo(cell, QPoint());
        if (first.y() != second.y()) {
            return first.y() < second.y();
        }
        return mirrored ? first.x() > second.x() : first.x() < second.x();
    });
    return controls;
}

// The control of a row that has the keyboard focus in its window, or null.
QWidget* TableView::focusedControl() const {
    QWidget* focused = window()->focusWidget();
    return rowOfView(focused) != kNoRow ? focused : nullptr;
}

// The button of a row that is held down, or null.
QAbstractButton* TableView::heldButton() const {
    for (QAbstractButton* button : findChildren<QAbstractButton*>()) {
        if (button->isDown() && rowOfView(button) != kNoRow) {
            return button;
        }
    }
    return nullptr;
}

// The number of a control in the visual order of its row, or kNoRow.
std::ptrdiff_t TableView::controlNumber(const QWidget* control) const {
    const std::ptrdiff_t row = rowOfView(control);
    if (row == kNoRow) {
        return kNoRow;
    }
    const std::vector<QWidget*> controls = controlsOfRow(static_cast<std::size_t>(row));
    return std::find(controls.begin(), controls.end(), control) - controls.begin();
}

// The control of a row with that number in visual order, or null.
QWidget* TableView::controlOfRow(std::ptrdiff_t row, std::ptrdiff_t control) const {
    const std::vector<QWidget*> controls = controlsOfRow(static_cast<std::size_t>(row));
    const bool inside = control >= 0 && static_cast<std::size_t>(control) < controls.size();
    return inside ? controls[static_cast<std::size_t>(control)] : nullptr;
}

// Focuses the control with that number; returns false if it is missing.
bool TableView::focusControl(std::ptrdiff_t row, std::ptrdiff_t control, Qt::FocusReason reason) {
    QWidget* view = controlOfRow(row, control);
    if (view != nullptr) {
        view->setFocus(reason);
    }
    return view != nullptr;
}

// Tab goes from the table through the controls of the current row and then out of the table.
bool TableView::focusNextPrevChild(bool next) {
    const Qt::FocusReason reason = next ? Qt::TabFocusReason : Qt::BacktabFocusReason;
    QWidget* focused = QApplication::focusWidget();
    if (focused == this) {
        return (next && focusControl(state_->current, 0, reason)) || focusOutside(next);
    }
    const std::ptrdiff_t row = rowOfView(focused);
    if (row == kNoRow) {
        return QWidget::focusNextPrevChild(next);
    }
    const std::ptrdiff_t place = controlNumber(focused);
    if (focusControl(row, next ? place + 1 : place - 1, reason)) {
        return true;
    }
    if (next) {
        return focusOutside(next);
    }
    setFocus(reason);
    return true;
}

// Focuses the nearest widget before or after the table and its children, or else the table itself.
bool TableView::focusOutside(bool next) {
    QWidget* candidate = this;
    do {
        candidate = next ? candidate->nextInFocusChain() : candidate->previousInFocusChain();
        const bool reachable = (candidate->focusPolicy() & Qt::TabFocus) == Qt::TabFocus &&
                               candidate->isVisible() && candidate->isEnabled() &&
                               candidate->focusProxy() == nullptr;
        if (reachable && !isAncestorOf(candidate)) {
            break;
        }
    } while (candidate != this);
    candidate->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

// Puts the controls right after the table in the window's focus order.
void TableView::orderControls() {
    QWidget* previous = this;
    for (std::size_t row = 0; row < state_->rows.size(); ++row) {
        for (QWidget* control : controlsOfRow(row)) {
            setTabOrder(previous, control);
            previous = control;
        }
    }
}

// Watches the controls of the cells. A press on a control does nothing unless its row stands still.
// A control that gets the focus makes its row the current one. Only Shift+Tab from after the table,
// which would reach the last row, goes to the current row instead.
bool TableView::eventFilter(QObject* watched, QEvent* event) {
    const bool isPress =
        event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick;
    if (isPress && !standsStill(rowOfView(static_cast<QWidget*>(watched)))) {
        return true;
    }
    if (event->type() == QEvent::FocusIn) {
        const std::ptrdiff_t row = rowOfView(static_cast<QWidget*>(watched));
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        noteReason(reason);
        const auto controls = controlsOfRow(static_cast<std::size_t>(state_->current));
        if (reason == Qt::BacktabFocusReason && row != state_->current &&
            focusControl(
                state_->current, static_cast<std::ptrdiff_t>(controls.size()) - 1, reason)) {
            return true;
        }
        if (row != kNoRow) {
            setCurrentRow(row);
        }
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace quillet::platform
