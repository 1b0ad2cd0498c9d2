#include "platform/ui/PixelAlignment.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace quillet::platform {

QRectF alignedToPixels(const QPainter& painter, const QRectF& rect) {
    const QTransform& toDevice = painter.deviceTransform();
    const QRectF device = toDevice.mapRect(rect);
    const double left = std::round(device.left());
    const double top = std::round(device.top());
    const double right = std::max(std::round(device.right()), left + 1);
    const double bottom = std::max(std::round(device.bottom()), top + 1);
    return toDevice.inverted().mapRect(QRectF(QPointF(left, top), QPointF(right, bottom)));
}

double pixelSize(const QPainter& painter) {
    // Only the painter knows the ratio of a picture that a view is rendered to.
    return 1 / painter.deviceTransform().m11();
}

double wholePixels(const QPainter& painter, double points) {
    const double pixel = pixelSize(painter);
    return std::max(1.0, std::round(points / pixel)) * pixel;
}

}  // namespace quillet::platform
