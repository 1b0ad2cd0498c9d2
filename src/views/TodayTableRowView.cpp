#include "views/TodayTableRowView.h"

#include <QPainter>
#include <QStyle>

#include "views/Metrics.h"
#include "views/Theme.h"

namespace quillet {

TodayTableRowView::TodayTableRowView(const QRect& frame,
                                     const std::shared_ptr<TodayViewController>& controller)
    : my_legacyDarkBackground_(controller->legacyDarkBackground()), controller_(controller) {
    setGeometry(frame);
}

void TodayTableRowView::drawSelection(QPainter& painter, const QRect& rect) {
    const QColor& color = Theme::of(my_legacyDarkBackground_).selection;
    if (color.isValid()) {
        painter.fillRect(rect, color);
    } else {
        TableRowView::drawSelection(painter, rect);
    }
}

void TodayTableRowView::drawKeyboardFocus(QPainter& painter, const QRect& rect) {
    using namespace Metrics;
    painter.fillRect(rect, Theme::of(my_legacyDarkBackground_).keyboardFocus);
    const QRect bar(rect.x() + kFocusBarIndent,
                    rect.y() + kFocusBarTop,
                    kFocusBarWidth,
                    rect.height() - 2 * kFocusBarTop);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().highlight());
    painter.drawRoundedRect(QStyle::visualRect(layoutDirection(), rect, bar),
                            kFocusBarWidth / 2.0,
                            kFocusBarWidth / 2.0);
}

}  // namespace quillet
