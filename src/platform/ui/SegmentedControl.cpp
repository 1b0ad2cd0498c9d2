#include "platform/ui/SegmentedControl.h"

#include <QAbstractButton>
#include <QHoverEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <utility>

#include "platform/presentation/AnimationContext.h"
#include "platform/ui/Accessibility.h"
#include "platform/ui/SingleLineText.h"

namespace quillet::platform {

namespace {

constexpr int kHeight = 20;       // points
constexpr int kLabelMargin = 12;  // points, on each side
constexpr int kFontSize = 12;     // points

// A segment as the mouse and screen readers know it. The selected one has the keyboard focus and
// leaves its keys to the control.
class Segment final : public QAbstractButton {
public:
    explicit Segment(QWidget* parent) : QAbstractButton(parent) {
        installAccessible<Segment, ButtonAccessible>();
        setCheckable(true);
        setAutoExclusive(true);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {}
    void keyPressEvent(QKeyEvent* event) override { event->ignore(); }
};

class GroupAccessible final : public QAccessibleWidget {
public:
    explicit GroupAccessible(QWidget* control)
        : QAccessibleWidget(control, QAccessible::Grouping) {}

    QAccessibleInterface* focusChild() const override {
        return widget()->hasFocus() ? QAccessible::queryAccessibleInterface(widget()->focusProxy())
                                    : nullptr;
    }
};

}  // namespace

SegmentedControl::SegmentedControl(QWidget* parent) : QWidget(parent) {
    installAccessible<SegmentedControl, GroupAccessible>();
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    QFont labelFont;
    labelFont.setPixelSize(kFontSize);
    labelFont.setWeight(QFont::Medium);
    setFont(labelFont);
}

void SegmentedControl::setSegmentCount(std::size_t count) {
    while (segmentCount() > count) {
        delete segments_.back();
        segments_.pop_back();
    }
    while (segmentCount() < count) {
        addSegment();
    }
    look_.labels.resize(count);
    look_.hovered = kNoSegment;
    look_.pressed = kNoSegment;
    select(std::min(look_.selected, count == 0 ? 0 : count - 1), 0);
    placeSegments();
    updateGeometry();
}

void SegmentedControl::addSegment() {
    auto* button = new Segment(this);
    button->installEventFilter(this);
    connect(button, &QAbstractButton::pressed, this, [this, segment = segmentCount()] {
        look_.pressed = segment;
        update();
    });
    connect(button, &QAbstractButton::clicked, this, [this, segment = segmentCount()] {
        look_.pressed = kNoSegment;
        select(segment, isVisible() ? AnimationContext::duration() : 0);
        if (const std::function<void()> action = action_) {
            action();
        }
    });
    button->show();
    segments_.push_back(button);
}

void SegmentedControl::placeSegments() {
    for (std::size_t i = 0; i < segmentCount(); ++i) {
        segments_[i]->setGeometry(segmentRect(i));
    }
}

void SegmentedControl::setLabel(std::string_view label, std::size_t segment) {
    if (segment < segmentCount()) {
        look_.labels[segment] = singleLineText(label);
        segments_[segment]->setAccessibleName(look_.labels[segment]);
        updateGeometry();
        update();
    }
}

void SegmentedControl::setSelectedSegment(std::size_t segment) {
    if (segment < segmentCount()) {
        select(segment, 0);
    }
}

void SegmentedControl::select(std::size_t segment, int slideDuration) {
    look_.selected = segment;
    slide_.stop();
    const auto end = static_cast<double>(segment);
    if (slideDuration > 0) {
        slide_.start(look_.plate, end, slideDuration, [this](double plate) {
            look_.plate = plate;
            update();
        });
    } else {
        look_.plate = end;
    }
    update();
    if (segments_.empty()) {
        return;
    }
    QAbstractButton* selected = segments_[segment];
    selected->setChecked(true);
    const bool hadFocus = isAncestorOf(window()->focusWidget());
    for (QAbstractButton* button : segments_) {
        button->setFocusPolicy(button == selected ? Qt::TabFocus : Qt::NoFocus);
    }
    setFocusProxy(selected);
    if (hadFocus) {
        selected->setFocus(Qt::OtherFocusReason);
    }
}

QRect SegmentedControl::segmentRect(std::size_t segment) const {
    if (segment >= segmentCount()) {
        return {};
    }
    return segmentSpan(rect(), segmentCount(), static_cast<double>(segment), layoutDirection())
        .toRect();
}

void SegmentedControl::setDark(bool dark) {
    look_.dark = dark;
    update();
}

void SegmentedControl::setShowsFocus(bool shows) {
    focusVisible_ = shows;
    update();
}

QSize SegmentedControl::sizeHint() const {
    int widest = 0;
    for (const QString& label : look_.labels) {
        widest = std::max(widest, fontMetrics().horizontalAdvance(label));
    }
    return {static_cast<int>(segmentCount()) * (widest + 2 * kLabelMargin), kHeight};
}

QSize SegmentedControl::minimumSizeHint() const {
    return {static_cast<int>(segmentCount()) * 2 * kLabelMargin, kHeight};
}

void SegmentedControl::paintEvent(QPaintEvent* /*event*/) {
    SegmentedControlPainter look = look_;
    look.rect = rect();
    look.direction = layoutDirection();
    look.focused = hasFocus() && focusVisible_;
    look.accent = palette().color(QPalette::Highlight);
    look.enabled = isEnabled();
    if (!look.enabled) {
        look.hovered = kNoSegment;
        look.pressed = kNoSegment;
    }
    QPainter painter(this);
    look.paint(painter);
}

std::size_t SegmentedControl::segmentAt(QPoint point) const {
    const auto found = std::find(segments_.begin(), segments_.end(), childAt(point));
    return found == segments_.end() ? kNoSegment
                                    : static_cast<std::size_t>(found - segments_.begin());
}

void SegmentedControl::setHovered(std::size_t segment) {
    if (look_.hovered != segment) {
        look_.hovered = segment;
        update();
    }
}

bool SegmentedControl::event(QEvent* event) {
    switch (event->type()) {
        case QEvent::HoverEnter:
        case QEvent::HoverMove:
            setHovered(segmentAt(static_cast<QHoverEvent*>(event)->position().toPoint()));
            break;
        case QEvent::HoverLeave:
        case QEvent::Hide:
            setHovered(kNoSegment);
            break;
        case QEvent::FontChange:
            updateGeometry();
            break;
        case QEvent::Resize:
        case QEvent::LayoutDirectionChange:
            placeSegments();
            break;
        default:
            break;
    }
    return QWidget::event(event);
}

// Watches how the segments get the focus. No ring is shown for a focus that the user did not ask
// for: a window that appears gives it to its first control.
bool SegmentedControl::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        setShowsFocus(isByKeyboard(reason) || (focusVisible_ && reason != Qt::MouseFocusReason));
    }
    return QWidget::eventFilter(watched, event);
}

// Segments pass on the release of a press that ends outside of them.
void SegmentedControl::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const bool pressed = std::exchange(look_.pressed, kNoSegment) != kNoSegment;
    update();
    // A user who drags back to the selected segment settles on it.
    if (pressed && segmentAt(event->position().toPoint()) == look_.selected) {
        segments_[look_.selected]->click();
    }
}

// The segment that a key leads to: at either end the selected one, kNoSegment for other keys.
std::size_t SegmentedControl::segmentForKey(int key) const {
    const std::size_t last = segmentCount() - 1;
    const std::size_t next = std::min(look_.selected + 1, last);
    const std::size_t previous = look_.selected == 0 ? 0 : look_.selected - 1;
    switch (key) {
        case Qt::Key_Left:
            return isRightToLeft() ? next : previous;
        case Qt::Key_Right:
            return isRightToLeft() ? previous : next;
        case Qt::Key_Up:
            return previous;
        case Qt::Key_Down:
            return next;
        case Qt::Key_Home:
            return 0;
        case Qt::Key_End:
            return last;
        default:
            return kNoSegment;
    }
}

void SegmentedControl::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    const bool chooses = key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter;
    const std::size_t segment = chooses ? look_.selected : segmentForKey(key);
    if (segments_.empty() || segment == kNoSegment) {
        QWidget::keyPressEvent(event);
        return;
    }
    setShowsFocus(true);
    if (chooses ? !event->isAutoRepeat() : segment != look_.selected) {
        segments_[segment]->click();
    }
}

}  // namespace quillet::platform
