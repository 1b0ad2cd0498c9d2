#pragma once

#include <QRectF>

class QPainter;

namespace quillet::platform {

// Moves the edges of the rectangle to the nearest pixels of the painter's device, so that it is
// drawn crisp at device pixel ratios such as 1.25. It stays at least one pixel wide and high.
QRectF alignedToPixels(const QPainter& painter, const QRectF& rect);

// The size of a pixel of the painter's device, in points.
double pixelSize(const QPainter& painter);

// The length nearest to `points` that is a whole number of pixels, at least one; in points.
double wholePixels(const QPainter& painter, double points);

}  // namespace quillet::platform
