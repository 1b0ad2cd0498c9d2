#pragma once

#include <QRect>
#include <QWidget>
#include <functional>
#include <string>

#include "platform/base/Atomic.h"

namespace quillet {

// A view with its origin at the top left that a stored block draws. Its properties are atomic;
// everything else is for the main thread.
class FlippedView : public QWidget {
public:
    // Draws `dirty`, a rectangle in the view's coordinates, which is not cleared before. Called
    // while the view is painted, so that the block may open a painter on it.
    using DrawingBlock = std::function<void(FlippedView& view, const QRect& dirty)>;

    explicit FlippedView(QWidget* parent = nullptr);
    explicit FlippedView(const QRect& frame, QWidget* parent = nullptr);
    FlippedView(const QRect& frame, DrawingBlock drawingBlock, QWidget* parent = nullptr);
    ~FlippedView() override;

    std::string viewId() const { return viewId_.get(); }
    void setViewId(std::string viewId) { viewId_.set(std::move(viewId)); }
    DrawingBlock drawingBlock() const { return drawingBlock_.get(); }
    void setDrawingBlock(DrawingBlock block) { drawingBlock_.set(std::move(block)); }

    // Does nothing on purpose, not even a redraw.
    void Refresh() {}

    static constexpr bool isFlipped() { return true; }  // y grows downwards
    FlippedView* xviewx() { return this; }
    QRect xframe() const { return geometry(); }
    QRect xbounds() const { return rect(); }
    QWidget* xsuperview() const { return parentWidget(); }
    QWidget* xwindow() const { return window(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    platform::Atomic<std::string> viewId_;
    platform::Atomic<DrawingBlock> drawingBlock_;
};

}  // namespace quillet
