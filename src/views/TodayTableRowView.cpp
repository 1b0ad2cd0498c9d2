#include "views/TodayTableRowView.h"

#include <QPainter>

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

}  // namespace quillet
