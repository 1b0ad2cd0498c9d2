#include "platform/ui/SegmentedControlPainter.h"

#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "platform/ui/PixelAlignment.h"
#include "platform/ui/SingleLineText.h"

namespace quillet::platform {

namespace {

constexpr double kTrackRadius = 6;        // points
constexpr double kPlateInset = 2;         // points, from the track's edge
constexpr double kPlateRadius = 4.5;      // points
constexpr double kFocusRingWidth = 2;     // points
constexpr double kSeparatorInset = 5;     // points, from the track's top and bottom
constexpr double kSeparatorWidth = 0.75;  // points; one pixel up to a ratio of 1.5
constexpr double kLabelPadding = 6;       // points, on each side
constexpr double kDisabledOpacity = 0.4;

}  // namespace

// Black at the first alpha in the light look, white at the second in the dark one.
QColor SegmentedControlPainter::ink(int lightAlpha, int darkAlpha) const {
    return dark ? QColor(255, 255, 255, darkAlpha) : QColor(0, 0, 0, lightAlpha);
}

QRectF segmentSpan(const QRect& control,
                   std::size_t count,
                   double position,
                   Qt::LayoutDirection direction) {
    const auto edge = [&](double place) {
        return std::round(control.width() * place / static_cast<double>(count));
    };
    // Between two whole positions the edges move evenly.
    const double from = std::floor(position);
    const double part = position - from;
    const double left = edge(from) + part * (edge(from + 1) - edge(from));
    const double right = edge(from + 1) + part * (edge(from + 2) - edge(from + 1));
    const double x = direction == Qt::RightToLeft ? control.width() - right : left;
    return {control.x() + x,
            static_cast<double>(control.y()),
            right - left,
            static_cast<double>(control.height())};
}

void SegmentedControlPainter::paint(QPainter& painter) const {
    painter.setRenderHint(QPainter::Antialiasing);
    if (!enabled) {
        painter.setOpacity(kDisabledOpacity);
    }
    paintTrack(painter);
    if (!labels.empty()) {
        paintSeparators(painter);
        paintHover(painter);
        paintPlate(painter);
        paintLabels(painter);
    }
}

QRectF SegmentedControlPainter::plateRect(const QPainter& painter, double position) const {
    const double inset = wholePixels(painter, kPlateInset);
    return alignedToPixels(painter, segmentSpan(rect, labels.size(), position, direction))
        .adjusted(inset, inset, -inset, -inset);
}

void SegmentedControlPainter::paintTrack(QPainter& painter) const {
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink(20, 26));
    painter.drawRoundedRect(alignedToPixels(painter, rect), kTrackRadius, kTrackRadius);
}

void SegmentedControlPainter::paintSeparators(QPainter& painter) const {
    for (std::size_t i = 1; i < labels.size(); ++i) {
        // Separators fade as the plate comes near.
        const auto place = static_cast<double>(i);
        const double away = std::min(std::abs(plate - place), std::abs(plate + 1 - place));
        const bool covered = plate < place && place < plate + 1;
        QColor color = ink(33, 41);
        color.setAlphaF(color.alphaF() * static_cast<float>(covered ? 0 : std::min(1.0, away)));
        const QRectF segment = segmentSpan(rect, labels.size(), place, direction);
        const double x = direction == Qt::RightToLeft ? segment.right() : segment.left();
        const double width = wholePixels(painter, kSeparatorWidth);
        const QRectF line(x - width / 2,
                          segment.top() + kSeparatorInset,
                          width,
                          segment.height() - 2 * kSeparatorInset);
        painter.fillRect(alignedToPixels(painter, line), color);
    }
}

void SegmentedControlPainter::paintHover(QPainter& painter) const {
    const std::size_t marked = pressed != kNoSegment ? pressed : hovered;
    if (marked >= labels.size() || marked == selected) {
        return;
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(pressed == marked && hovered == marked ? ink(28, 28) : ink(13, 15));
    painter.drawRoundedRect(
        plateRect(painter, static_cast<double>(marked)), kPlateRadius, kPlateRadius);
}

void SegmentedControlPainter::paintPlate(QPainter& painter) const {
    const QRectF place = plateRect(painter, plate);
    painter.setBrush(Qt::NoBrush);
    if (focused) {
        const double width = wholePixels(painter, kFocusRingWidth);
        const double half = width / 2;
        painter.setPen(QPen(accent, width));
        painter.drawRoundedRect(
            place.adjusted(-half, -half, half, half), kPlateRadius + half, kPlateRadius + half);
    }
    painter.setPen(Qt::NoPen);
    if (!focused && !dark) {
        painter.setBrush(QColor(0, 0, 0, 15));
        for (const double spread : {1.5, 1.0, 0.5}) {  // points; together a soft edge
            const QRectF layer =
                place.translated(0, 0.75).adjusted(-spread, -spread, spread, spread);
            painter.drawRoundedRect(layer, kPlateRadius + spread, kPlateRadius + spread);
        }
    }
    const bool isPressed = pressed == selected;
    painter.setBrush(dark        ? QColor(255, 255, 255, isPressed ? 51 : 66)
                     : isPressed ? QColor(240, 240, 240)
                                 : QColor(Qt::white));
    painter.drawRoundedRect(place, kPlateRadius, kPlateRadius);
    if (dark) {
        const double hairline = pixelSize(painter);
        const double half = hairline / 2;
        painter.setPen(QPen(QColor(255, 255, 255, 20), hairline));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(
            place.adjusted(half, half, -half, -half), kPlateRadius - half, kPlateRadius - half);
    }
}

void SegmentedControlPainter::paintLabels(QPainter& painter) const {
    const QFontMetricsF metrics(painter.font());
    for (std::size_t i = 0; i < labels.size(); ++i) {
        const QRectF segment = segmentSpan(rect, labels.size(), static_cast<double>(i), direction);
        const QRectF room = segment.adjusted(kLabelPadding, 0, -kLabelPadding, 0);
        const bool strong = i == selected || i == hovered;
        painter.setPen(strong ? ink(217, 235) : ink(166, 166));
        painter.setLayoutDirection(directionOf(labels[i]));
        painter.drawText(room,
                         Qt::AlignCenter | Qt::TextSingleLine,
                         metrics.elidedText(labels[i], Qt::ElideRight, room.width()));
    }
}

}  // namespace quillet::platform
