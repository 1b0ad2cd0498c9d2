#pragma once

#include <QAccessible>
#include <functional>

class QWidget;

namespace quillet::platform {

// Makes the views of this kit known to screen readers. Called by their constructors; every call
// but the first does nothing. Main thread only.
void installAccessibility();

// Tells screen readers what became of a view. Main thread only.
void tellScreenReaders(QWidget* view, QAccessible::Event what);
// Is told the same first, also where no screen reader listens; none to end that.
void setScreenReaderObserver(std::function<void(QWidget* view, QAccessible::Event what)> observer);

}  // namespace quillet::platform
