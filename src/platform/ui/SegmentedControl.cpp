#include "platform/ui/SegmentedControl.h"

#include <QAccessible>
#include <QHoverEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/presentation/AnimationContext.h"
#include "platform/presentation/ValueAnimation.h"
#include "platform/ui/Accessibility.h"
#include "platform/ui/SegmentedControlPainter.h"
#include "platform/ui/SingleLineText.h"

namespace quillet::platform {

namespace {

constexpr std::size_t kNoSegment = SegmentedControlPainter::kNoSegment;
constexpr int kHeight = 20;       // points
constexpr int kLabelMargin = 12;  // points, on each side
constexpr int kFontSize = 12;     // points

}  // namespace

struct SegmentedControl::State {
    struct Segment {
        std::string label;
        QString line;  // the label made fit for one line
    };

    std::vector<Segment> segments;
    std::size_t selected = 0;
    std::size_t hovered = kNoSegment;
    std::size_t pressed = kNoSegment;
    bool focusVisible = false;
    bool dark = false;
    double plate = 0;  // where the selected plate is, in segments from the first
    ValueAnimation slide;
    std::function<void()> action;
};

SegmentedControl::SegmentedControl(QWidget* parent)
    : QWidget(parent), state_(std::make_unique<State>()) {
    installAccessibility();
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    QFont labelFont;
    labelFont.setPixelSize(kFontSize);
    labelFont.setWeight(QFont::Medium);
    setFont(labelFont);
}

SegmentedControl::~SegmentedControl() = default;

void SegmentedControl::setSegmentCount(std::size_t count) {
    state_->segments.resize(count);
    state_->hovered = kNoSegment;
    state_->pressed = kNoSegment;
    select(std::min(state_->selected, count == 0 ? 0 : count - 1), 0);
    updateGeometry();
}

std::size_t SegmentedControl::segmentCount() const {
    return state_->segments.size();
}

void SegmentedControl::setLabel(std::string_view label, std::size_t segment) {
    if (segment < segmentCount()) {
        state_->segments[segment] = {std::string(label), singleLineText(label)};
        updateGeometry();
        update();
    }
}

std::string SegmentedControl::label(std::size_t segment) const {
    return segment < segmentCount() ? state_->segments[segment].label : std::string();
}

void SegmentedControl::setSelectedSegment(std::size_t segment) {
    if (segment < segmentCount()) {
        select(segment, 0);
    }
}

std::size_t SegmentedControl::selectedSegment() const {
    return state_->selected;
}

void SegmentedControl::setAction(std::function<void()> action) {
    state_->action = std::move(action);
}

void SegmentedControl::clickSegment(std::size_t segment) {
    if (segment >= segmentCount()) {
        return;
    }
    select(segment, isVisible() ? AnimationContext::duration() : 0);
    if (const std::function<void()> action = state_->action) {
        action();
    }
}

void SegmentedControl::select(std::size_t segment, int slideDuration) {
    const bool changed = segment != state_->selected;
    state_->selected = segment;
    state_->slide.stop();
    const auto end = static_cast<double>(segment);
    if (slideDuration > 0) {
        state_->slide.start(state_->plate, end, slideDuration, [this](double plate) {
            state_->plate = plate;
            update();
        });
    } else {
        state_->plate = end;
    }
    update();
    if (changed && QAccessible::isActive()) {
        QAccessible::State checked;
        checked.checked = true;
        QAccessibleStateChangeEvent event(this, checked);
        event.setChild(static_cast<int>(segment));
        QAccessible::updateAccessibility(&event);
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
    state_->dark = dark;
    update();
}

QSize SegmentedControl::sizeHint() const {
    int widest = 0;
    for (const State::Segment& segment : state_->segments) {
        widest = std::max(widest, fontMetrics().horizontalAdvance(segment.line));
    }
    return {static_cast<int>(segmentCount()) * (widest + 2 * kLabelMargin), kHeight};
}

QSize SegmentedControl::minimumSizeHint() const {
    return {static_cast<int>(segmentCount()) * 2 * kLabelMargin, kHeight};
}

void SegmentedControl::paintEvent(QPaintEvent* /*event*/) {
    std::vector<QString> labels;
    for (const State::Segment& segment : state_->segments) {
        labels.push_back(segment.line);
    }
    QPainter painter(this);
    const SegmentedControlPainter look{
        .rect = rect(),
        .labels = labels,
        .direction = layoutDirection(),
        .plate = state_->plate,
        .selected = state_->selected,
        .hovered = isEnabled() ? state_->hovered : kNoSegment,
        .pressed = isEnabled() ? state_->pressed : kNoSegment,
        .focused = hasFocus() && state_->focusVisible,
        .enabled = isEnabled(),
        .dark = state_->dark,
        .accent = palette().color(QPalette::Highlight),
    };
    look.paint(painter);
}

std::size_t SegmentedControl::segmentAt(QPoint point) const {
    for (std::size_t i = 0; i < segmentCount(); ++i) {
        if (segmentRect(i).contains(point)) {
            return i;
        }
    }
    return kNoSegment;
}

void SegmentedControl::setHovered(std::size_t segment) {
    if (state_->hovered != segment) {
        state_->hovered = segment;
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
        default:
            break;
    }
    return QWidget::event(event);
}

void SegmentedControl::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    state_->pressed = segmentAt(event->position().toPoint());
    update();
}

void SegmentedControl::mouseMoveEvent(QMouseEvent* event) {
    setHovered(segmentAt(event->position().toPoint()));
}

void SegmentedControl::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const std::size_t pressed = std::exchange(state_->pressed, kNoSegment);
    const std::size_t released = segmentAt(event->position().toPoint());
    update();
    // Who drags back to the selected segment settles on it.
    const bool settles = pressed != kNoSegment && released == state_->selected;
    if (released == pressed || settles) {
        clickSegment(released);
    }
}

// The segment that an arrow key leads to, the present one where it leads no further; none for other
// keys.
std::size_t SegmentedControl::segmentForKey(int key) const {
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const std::size_t last = segmentCount() - 1;
    const std::size_t next = std::min(state_->selected + 1, last);
    const std::size_t previous = state_->selected == 0 ? 0 : state_->selected - 1;
    switch (key) {
        case Qt::Key_Left:
            return mirrored ? next : previous;
        case Qt::Key_Right:
            return mirrored ? previous : next;
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

bool SegmentedControl::showsFocus() const {
    return state_->focusVisible;
}

void SegmentedControl::setShowsFocus(bool shows) {
    state_->focusVisible = shows;
    update();
}

void SegmentedControl::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    const bool chooses = key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter;
    const std::size_t segment = chooses ? state_->selected : segmentForKey(key);
    if (segmentCount() == 0 || segment == kNoSegment) {
        QWidget::keyPressEvent(event);
        return;
    }
    state_->focusVisible = true;
    update();
    if (chooses ? !event->isAutoRepeat() : segment != state_->selected) {
        clickSegment(segment);
    }
}

void SegmentedControl::focusInEvent(QFocusEvent* event) {
    const Qt::FocusReason reason = event->reason();
    // A window that comes up gives its first control the focus unasked: that shows no ring.
    if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
        reason == Qt::ShortcutFocusReason) {
        state_->focusVisible = true;
    } else if (reason == Qt::MouseFocusReason) {
        state_->focusVisible = false;
    }
    QWidget::focusInEvent(event);
    update();
}

void SegmentedControl::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    update();
}

}  // namespace quillet::platform
