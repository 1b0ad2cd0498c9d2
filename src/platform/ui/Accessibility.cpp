#include "platform/ui/Accessibility.h"

#include <QAccessibleWidget>
#include <utility>

#include "platform/ui/ImageButton.h"
#include "platform/ui/SegmentedControl.h"
#include "platform/ui/SegmentedControlAccessible.h"
#include "platform/ui/TableAccessible.h"
#include "platform/ui/TableView.h"
#include "platform/ui/TextField.h"

namespace quillet::platform {

namespace {

// Belongs to the main thread.
std::function<void(QWidget*, QAccessible::Event)>
    observe;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

class TextFieldAccessible final : public QAccessibleWidget {
public:
    explicit TextFieldAccessible(TextField* field)
        : QAccessibleWidget(field, QAccessible::StaticText), field_(field) {}

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? QString::fromStdString(field_->stringValue())
                                         : QAccessibleWidget::text(kind);
    }

private:
    TextField* field_;
};

// In a table the buttons of a cell are the children of its row.
class ImageButtonAccessible final : public QAccessibleWidget {
public:
    explicit ImageButtonAccessible(ImageButton* button)
        : QAccessibleWidget(button, QAccessible::Button), button_(button) {}

    QAccessibleInterface* parent() const override {
        for (QWidget* view = button_->parentWidget(); view; view = view->parentWidget()) {
            if (qobject_cast<TableRowView*>(view) != nullptr) {
                return QAccessible::queryAccessibleInterface(view);
            }
        }
        return QAccessibleWidget::parent();
    }

    // The tooltip, which stands in for a description, often says no more than the name.
    QString text(QAccessible::Text kind) const override {
        const QString text = QAccessibleWidget::text(kind);
        const bool repeats =
            kind == QAccessible::Description && text == this->text(QAccessible::Name);
        return repeats ? QString() : text;
    }

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.pressed = button_->isDown();
        return state;
    }

    QStringList actionNames() const override {
        QStringList names{pressAction()};
        names += QAccessibleWidget::actionNames();
        return names;
    }

    void doAction(const QString& name) override {
        if (name == pressAction()) {
            button_->click();
        } else {
            QAccessibleWidget::doAction(name);
        }
    }

private:
    ImageButton* button_;
};

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    if (auto* table = qobject_cast<TableView*>(object)) {
        return new TableAccessible(table);
    }
    if (auto* row = qobject_cast<TableRowView*>(object)) {
        return new TableRowAccessible(row);
    }
    if (auto* control = qobject_cast<SegmentedControl*>(object)) {
        return new SegmentedControlAccessible(control);
    }
    if (auto* button = qobject_cast<ImageButton*>(object)) {
        return new ImageButtonAccessible(button);
    }
    if (auto* field = qobject_cast<TextField*>(object)) {
        return new TextFieldAccessible(field);
    }
    return nullptr;
}

}  // namespace

void installAccessibility() {
    static const bool kInstalled = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
    static_cast<void>(kInstalled);
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
