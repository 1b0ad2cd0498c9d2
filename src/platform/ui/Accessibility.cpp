#include "platform/ui/Accessibility.h"

#include <utility>

#include "platform/ui/TableRowView.h"

namespace quillet::platform {

namespace {

// Belongs to the main thread.
std::function<void(QWidget*, QAccessible::Event)>
    observe;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

}  // namespace

ButtonAccessible::ButtonAccessible(QAbstractButton* button)
    : QAccessibleWidget(button,
                        button->isCheckable() ? QAccessible::RadioButton : QAccessible::Button),
      button_(button) {}

QAccessibleInterface* ButtonAccessible::parent() const {
    for (QWidget* view = button_->parentWidget(); view; view = view->parentWidget()) {
        if (qobject_cast<TableRowView*>(view) != nullptr) {
            return QAccessible::queryAccessibleInterface(view);
        }
    }
    return QAccessibleWidget::parent();
}

// The tooltip stands in for a description and often says no more than the name.
QString ButtonAccessible::text(QAccessible::Text kind) const {
    const QString text = QAccessibleWidget::text(kind);
    const bool repeats = kind == QAccessible::Description && text == this->text(QAccessible::Name);
    return repeats ? QString() : text;
}

QAccessible::State ButtonAccessible::state() const {
    QAccessible::State state = QAccessibleWidget::state();
    state.pressed = button_->isDown();
    state.checkable = button_->isCheckable();
    state.checked = button_->isChecked();
    state.focusable = true;  // arrow keys reach the radio buttons that Tab passes over
    return state;
}

QStringList ButtonAccessible::actionNames() const {
    return QStringList{pressAction()} + QAccessibleWidget::actionNames();
}

void ButtonAccessible::doAction(const QString& name) {
    if (name == pressAction()) {
        button_->click();
    } else {
        QAccessibleWidget::doAction(name);
    }
}

void tellScreenReaders(QWidget* view, QAccessible::Event what) {
    if (observe) {
        observe(view, what);
    }
    QAccessibleEvent event(view, what);
    QAccessible::updateAccessibility(&event);
}

void setScreenReaderObserver(std::function<void(QWidget*, QAccessible::Event)> observer) {
    observe = std::move(observer);
}

}  // namespace quillet::platform
