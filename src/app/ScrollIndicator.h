#pragma once

#include <QWidget>

class QScrollArea;

namespace quillet {

// A thin bar over the right edge of a scroll area that shows which part of the contents is visible.
// It takes no room and no clicks, and is invisible while everything fits. Main thread only.
class ScrollIndicator : public QWidget {
public:
    // `area` owns it.
    explicit ScrollIndicator(QScrollArea* area);

    void setColor(const QColor& color);
    // Moves to its place over the area. Call it after each change of the area's size.
    void place();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QScrollArea* area_;
    QColor color_;
};

}  // namespace quillet
