#include "app/ScrollIndicator.h"

#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <algorithm>

namespace quillet {

namespace {

constexpr int kWidth = 4;         // points
constexpr int kMargin = 3;        // points to the edge
constexpr int kShortestBar = 24;  // points

}  // namespace

ScrollIndicator::ScrollIndicator(QScrollArea* area) : QWidget(area), area_(area) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    const QScrollBar* bar = area->verticalScrollBar();
    connect(bar, &QScrollBar::valueChanged, this, qOverload<>(&QWidget::update));
    connect(bar, &QScrollBar::rangeChanged, this, qOverload<>(&QWidget::update));
}

void ScrollIndicator::setColor(const QColor& color) {
    color_ = color;
    update();
}

void ScrollIndicator::place() {
    const int width = kWidth + 2 * kMargin;
    const int left = layoutDirection() == Qt::RightToLeft ? 0 : area_->width() - width;
    setGeometry(left, 0, width, area_->height());
    raise();
}

void ScrollIndicator::paintEvent(QPaintEvent* /*event*/) {
    const QScrollBar* bar = area_->verticalScrollBar();
    const double range = bar->maximum() - bar->minimum();
    if (range <= 0) {
        return;
    }
    const double track = height() - 2 * kMargin;
    const double length =
        std::max<double>(kShortestBar, track * bar->pageStep() / (range + bar->pageStep()));
    const double top = kMargin + (track - length) * (bar->value() - bar->minimum()) / range;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color_);
    constexpr double kRadius = kWidth / 2.0;
    painter.drawRoundedRect(QRectF(kMargin, top, kWidth, length), kRadius, kRadius);
}

}  // namespace quillet
