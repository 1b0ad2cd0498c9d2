#include "platform/ui/SlidingRow.h"

#include <QMouseEvent>
#include <QPainter>
#include <cmath>

namespace quillet::platform {

SlidingRow::SlidingRow(const QPixmap& picture, const QRect& place, int direction, QWidget* parent)
    : QWidget(parent), picture_(picture), place_(place), direction_(direction) {
    setGeometry(place);
}

void SlidingRow::setProgress(double progress) {
    progress_ = progress;
    const auto offset = static_cast<int>(std::lround(progress * place_.width()));
    move(place_.x() + direction_ * offset, place_.y());
    update();
}

void SlidingRow::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setOpacity(1 - progress_);
    painter.drawPixmap(0, 0, picture_);
}

void SlidingRow::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void SlidingRow::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
}

}  // namespace quillet::platform
