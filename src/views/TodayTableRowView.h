#pragma once

#include <memory>

#include "platform/ui/TableView.h"
#include "widget/TodayViewController.h"

namespace quillet {

// The view behind a message's cell. It draws the selection for the look that the controller had
// when the row was made. Main thread only.
class TodayTableRowView final : public platform::TableRowView {
public:
    TodayTableRowView(const QRect& frame, const std::shared_ptr<TodayViewController>& controller);

    std::shared_ptr<TodayViewController> controller() const { return controller_.lock(); }
    void setController(const std::shared_ptr<TodayViewController>& controller) {
        controller_ = controller;
    }

    void drawSelection(QPainter& painter, const QRect& rect) override;
    // Draws a soft plate and a bar at the leading edge.
    void drawKeyboardFocus(QPainter& painter, const QRect& rect) override;

private:
    bool my_legacyDarkBackground_;
    std::weak_ptr<TodayViewController> controller_;
};

}  // namespace quillet
