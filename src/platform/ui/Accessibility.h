#pragma once

#include <QAbstractButton>
#include <QAccessibleWidget>
#include <functional>

namespace quillet::platform {

// Lets screen readers see views of the class `View` as an `Interface`, which is constructed from a
// View*. The constructor of `View` calls it; further calls do nothing. Main thread only.
template <typename View, typename Interface>
void installAccessible() {
    QAccessible::installFactory([](const QString&, QObject* object) -> QAccessibleInterface* {
        auto* view = dynamic_cast<View*>(object);
        return view != nullptr ? new Interface(view) : nullptr;
    });
}

// A button as a screen reader sees it: a radio button if it is checkable. In a table the buttons of
// a cell are the children of its row.
class ButtonAccessible final : public QAccessibleWidget {
public:
    explicit ButtonAccessible(QAbstractButton* button);

    QAccessibleInterface* parent() const override;
    QString text(QAccessible::Text kind) const override;
    QAccessible::State state() const override;
    QStringList actionNames() const override;
    void doAction(const QString& name) override;

private:
    QAbstractButton* button_;
};

// Whether a focus came because the user moved it by keyboard.
inline bool isByKeyboard(Qt::FocusReason reason) {
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
           reason == Qt::ShortcutFocusReason;
}

// Tells screen readers what happened to a view. Main thread only.
void tellScreenReaders(QWidget* view, QAccessible::Event what);
// The observer is called before screen readers are told, even if none listens; pass none to end it.
void setScreenReaderObserver(std::function<void(QWidget* view, QAccessible::Event what)> observer);

}  // namespace quillet::platform
