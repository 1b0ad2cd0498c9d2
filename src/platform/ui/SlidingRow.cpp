#include "platform/ui/SlidingRow.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <utility>

namespace quillet::platform {

namespace {

// The picture disappears before the row below has moved up all the way, so that they overlap
// little.
constexpr double kFadeSpeed = 1.5;

}  // namespace

SlidingRow::SlidingRow(QPixmap picture, const QRect& place, int direction, QWidget* parent)
    : QWidget(parent), picture_(std::move(picture)), place_(place), direction_(direction) {
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
    painter.setOpacity(std::max(0.0, 1 - kFadeSpeed * progress_));
    painter.drawPixmap(0, 0, picture_);
}

}  // namespace quillet::platform
