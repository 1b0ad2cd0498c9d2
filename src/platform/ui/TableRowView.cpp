#include "platform/ui/TableRowView.h"

#include <QPaintEvent>
#include <QPainter>

#include "platform/ui/PixelAlignment.h"

namespace quillet::platform {

namespace {

constexpr double kMarkInset = 3;   // points
constexpr double kMarkRadius = 6;  // points
constexpr double kMarkWidth = 2;   // points

}  // namespace

TableCellView::TableCellView(QWidget* parent) : QWidget(parent) {}

TableRowView::TableRowView(QWidget* parent) : QWidget(parent) {}

void TableRowView::setSelected(bool selected) {
    if (selected_ != selected) {
        selected_ = selected;
        update();
    }
}

void TableRowView::setKeyboardMark(bool marked) {
    if (keyboardMark_ != marked) {
        keyboardMark_ = marked;
        update();
    }
}

void TableRowView::drawSelection(QPainter& painter, const QRect& rect) {
    QColor color = palette().color(QPalette::Highlight);
    color.setAlphaF(0.45F);
    painter.fillRect(rect, color);
}

void TableRowView::drawKeyboardFocus(QPainter& painter, const QRect& rect) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::Highlight), kMarkWidth));
    painter.setBrush(Qt::NoBrush);
    const QRectF mark = alignedToPixels(
        painter, QRectF(rect).adjusted(kMarkInset, kMarkInset, -kMarkInset, -kMarkInset));
    painter.drawRoundedRect(mark, kMarkRadius, kMarkRadius);
}

void TableRowView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    if (selected_) {
        drawSelection(painter, event->rect());
    }
    if (keyboardMark_) {
        drawKeyboardFocus(painter, rect());
    }
}

}  // namespace quillet::platform
