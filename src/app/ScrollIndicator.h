#pragma once

#include <QWidget>

class QScrollArea;

namespace quillet {

// A thin bar over the right edge of a scroll area that tells where its contents stand. It takes no
// room and no clicks; there is nothing to see while everything fits. Main thread only.
class ScrollIndicator : public QWidget {
public:
    // A child of `area`, beside its viewport.
    explicit ScrollIndicator(QScrollArea* area);

    void setColor(const QColor& color);
    // Takes its place over the area; after each change of the area's size.
    void place();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QScrollArea* area_;
    QColor color_;
};

}  // namespace quillet
