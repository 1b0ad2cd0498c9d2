#pragma once

#include <QPixmap>
#include <QWidget>

namespace quillet::platform {

// The picture of a removed row, which slides to one side and fades. Main thread only.
class SlidingRow : public QWidget {
    Q_OBJECT

public:
    // `direction`: -1 to the left, 1 to the right.
    SlidingRow(QPixmap picture, const QRect& place, int direction, QWidget* parent);

    void setProgress(double progress);  // 0 to 1

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QPixmap picture_;
    QRect place_;
    int direction_;
    double progress_ = 0;
};

}  // namespace quillet::platform
