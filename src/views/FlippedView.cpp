#include "views/FlippedView.h"

#include <QPaintEvent>
#include <utility>

#include "platform/base/NotificationCenter.h"

namespace quillet {

FlippedView::FlippedView(QWidget* parent) : FlippedView(QRect(), parent) {}

FlippedView::FlippedView(const QRect& frame, QWidget* parent)
    : FlippedView(frame, DrawingBlock(), parent) {}

FlippedView::FlippedView(const QRect& frame, DrawingBlock drawingBlock, QWidget* parent)
    : QWidget(parent), drawingBlock_(std::move(drawingBlock)) {
    setGeometry(frame);
}

FlippedView::~FlippedView() {
    setDrawingBlock({});
    platform::NotificationCenter::defaultCenter().removeObserver(this);
}

void FlippedView::paintEvent(QPaintEvent* event) {
    if (const DrawingBlock block = drawingBlock()) {
        block(*this, event->rect());
    }
}

}  // namespace quillet
