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
    if (my_legacyDarkBackground_) {
        TableRowView::drawSelection(painter, rect);
    } else {
        painter.fillRect(rect, Theme::of(false).selection);
    }
}

}  // namespace quillet
