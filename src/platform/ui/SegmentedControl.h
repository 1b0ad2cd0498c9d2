#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace quillet::platform {

// A switch of a few segments of which one is selected. Mouse: press and release on a segment.
// Keyboard: arrows, Home and End. Screen readers see a list of radio buttons. Main thread only.
class SegmentedControl : public QWidget {
public:
    explicit SegmentedControl(QWidget* parent = nullptr);
    ~SegmentedControl() override;

    void setSegmentCount(std::size_t count);
    std::size_t segmentCount() const;
    void setLabel(std::string_view label, std::size_t segment);  // UTF-8
    std::string label(std::size_t segment) const;
    // Does not run the action.
    void setSelectedSegment(std::size_t segment);
    std::size_t selectedSegment() const;
    // Run when the user selects another segment.
    void setAction(std::function<void()> action);
    // The place of a segment in the control's coordinates, in points.
    QRect segmentRect(std::size_t segment) const;
    void setDark(bool dark);

    QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
