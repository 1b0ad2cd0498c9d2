#include "app/PanelShadow.h"

#include <QPainter>
#include <QPixmap>
#include <QPixmapCache>
#include <algorithm>
#include <cmath>
#include <qdrawutil.h>

#include "views/Theme.h"

namespace quillet {

namespace {

// The shadow lies a little low, as if the light came from above.
constexpr int kDrop = 3;  // points
// Each corner of the shadow fits into a square of this size.
constexpr int kCorner = Theme::kPanelShadowRadius + Theme::kPanelCornerRadius;  // points

// One ring after the other from the edge outwards, each fainter, close to how a blurred shadow
// falls off.
void paintRings(QPainter& painter, const QRectF& edge, QColor darkest) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(darkest);
    painter.drawRoundedRect(edge, Theme::kPanelCornerRadius, Theme::kPanelCornerRadius);
    painter.setBrush(Qt::NoBrush);
    const double full = darkest.alphaF();
    for (int distance = 0; distance < Theme::kPanelShadowRadius; ++distance) {
        const double left = 1.0 - static_cast<double>(distance) / Theme::kPanelShadowRadius;
        darkest.setAlphaF(static_cast<float>(full * left * left * left));
        painter.setPen(QPen(darkest, 1.0));
        const double out = distance + 0.5;
        const double radius = Theme::kPanelCornerRadius + out;
        painter.drawRoundedRect(edge.adjusted(-out, -out, out, out), radius, radius);
    }
}

// The four corners of the shadow with a point between them.
QPixmap cornersAt(double ratio, const QColor& darkest) {
    const QString key = QStringLiteral("panel shadow %1 %2").arg(darkest.rgba()).arg(ratio);
    QPixmap corners;
    if (!QPixmapCache::find(key, &corners)) {
        constexpr int kSize = 2 * kCorner + 1;
        constexpr int kOut = Theme::kPanelShadowRadius;
        corners = QPixmap(QSizeF(kSize * ratio, kSize * ratio).toSize());
        corners.setDevicePixelRatio(ratio);
        corners.fill(Qt::transparent);
        QPainter painter(&corners);
        painter.setRenderHint(QPainter::Antialiasing);
        paintRings(painter, QRectF(0, 0, kSize, kSize).adjusted(kOut, kOut, -kOut, -kOut), darkest);
        painter.end();
        QPixmapCache::insert(key, corners);
    }
    return corners;
}

}  // namespace

void paintPanelShadow(QPainter& painter, const QRect& panel, const QColor& darkest) {
    constexpr int kOut = Theme::kPanelShadowRadius;
    const QRect edge = panel.translated(0, kDrop);
    const QRect outside = edge.adjusted(-kOut, -kOut, kOut, kOut);
    const double ratio = painter.device()->devicePixelRatioF();
    // Between whole pixels the corners would not look the same everywhere.
    if (ratio != std::floor(ratio) || std::min(outside.width(), outside.height()) <= 2 * kCorner) {
        paintRings(painter, edge, darkest);
        return;
    }
    const QPixmap corners = cornersAt(ratio, darkest);
    const int corner = static_cast<int>(kCorner * ratio);
    qDrawBorderPixmap(&painter,
                      outside,
                      {kCorner, kCorner, kCorner, kCorner},
                      corners,
                      corners.rect(),
                      {corner, corner, corner, corner});
}

}  // namespace quillet
