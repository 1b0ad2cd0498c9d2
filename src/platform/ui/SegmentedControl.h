#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace quillet::platform {

// A switch of a few segments of which one is selected. Mouse: press and release on a segment.
// Keyboard: arrows, Home and End, Space and Return for the selected one. Screen readers see a group
// of radio buttons. In a right-to-left layout direction the first segment is at the right. Main
// thread only.
class SegmentedControl : public QWidget {
    Q_OBJECT

public:
    explicit SegmentedControl(QWidget* parent = nullptr);
    ~SegmentedControl() override;

    // New segments have no label; the selection is held at the last segment.
    void setSegmentCount(std::size_t count);
    std::size_t segmentCount() const;
    // UTF-8, one line, elided where it does not fit. A segment beyond the last is ignored.
    void setLabel(std::string_view label, std::size_t segment);
    std::string label(std::size_t segment) const;
    // Does not run the action. A segment beyond the last is ignored.
    void setSelectedSegment(std::size_t segment);
    std::size_t selectedSegment() const;
    // Run when the user chooses a segment, be it the selected one.
    void setAction(std::function<void()> action);
    // What a click on the segment does: selects it and runs the action.
    void clickSegment(std::size_t segment);
    // The place of a segment in the control's coordinates, in points.
    QRect segmentRect(std::size_t segment) const;
    void setDark(bool dark);
    // Whether the user sees that the control has the keyboard, while it does.
    bool showsFocus() const;
    void setShowsFocus(bool shows);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    std::size_t segmentAt(QPoint point) const;
    std::size_t segmentForKey(int key) const;
    void setHovered(std::size_t segment);
    void select(std::size_t segment, int slideDuration);

    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
