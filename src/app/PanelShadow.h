#pragma once

class QColor;
class QPainter;
class QRect;

namespace quillet {

// Paints the shadow around a panel at `panel`, in points, and what shines through the panel's
// border. It is `darkest` at the panel's edge and ends Theme::kPanelShadowRadius away from it.
// The painter antialiases. Main thread only.
void paintPanelShadow(QPainter& painter, const QRect& panel, const QColor& darkest);

}  // namespace quillet
