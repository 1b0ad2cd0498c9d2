#pragma once

#include <QWidget>
#include <functional>
#include <string_view>
#include <vector>

#include "platform/presentation/ValueAnimation.h"
#include "platform/ui/SegmentedControlPainter.h"

class QAbstractButton;

namespace quillet::platform {

// A switch of a few segments of which one is selected. Mouse: press and release on a segment.
// Keyboard: one Tab stop; arrows, Home and End, Space and Return for the selected segment. Screen
// readers see a group of radio buttons. In a right-to-left layout direction the first segment is at
// the right. Main thread only.
class SegmentedControl : public QWidget {
    Q_OBJECT

public:
    explicit SegmentedControl(QWidget* parent = nullptr);

    // New segments have no label. If the selected segment goes, the last one is selected.
    void setSegmentCount(std::size_t count);
    std::size_t segmentCount() const { return segments_.size(); }
    // UTF-8, one line, elided if it does not fit. A segment beyond the last is ignored.
    void setLabel(std::string_view label, std::size_t segment);
    // Does not run the action. A segment beyond the last is ignored.
    void setSelectedSegment(std::size_t segment);
    std::size_t selectedSegment() const { return look_.selected; }
    // Called when the user chooses a segment, even the selected one.
    void setAction(std::function<void()> action) { action_ = std::move(action); }
    // In the control's coordinates, in points; empty for a segment beyond the last.
    QRect segmentRect(std::size_t segment) const;
    void setDark(bool dark);
    // Whether the control shows a ring while it has the keyboard focus.
    bool showsFocus() const { return focusVisible_; }
    void setShowsFocus(bool shows);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    static constexpr std::size_t kNoSegment = SegmentedControlPainter::kNoSegment;

    void addSegment();
    void placeSegments();
    std::size_t segmentAt(QPoint point) const;
    std::size_t segmentForKey(int key) const;
    void setHovered(std::size_t segment);
    void select(std::size_t segment, int slideDuration);

    std::vector<QAbstractButton*> segments_;  // children, which the control draws
    SegmentedControlPainter look_;
    bool focusVisible_ = false;
    ValueAnimation slide_;
    std::function<void()> action_;
};

}  // namespace quillet::platform
