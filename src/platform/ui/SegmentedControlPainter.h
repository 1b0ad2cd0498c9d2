#pragma once

#include <QColor>
#include <QRectF>
#include <QString>
#include <cstddef>
#include <limits>
#include <vector>

class QPainter;

namespace quillet::platform {

// The place of a segment in a control of `count` segments. `position` is its index, or lies between
// two of them. The edges of whole positions are whole points.
QRectF segmentSpan(const QRect& control,
                   std::size_t count,
                   double position,
                   Qt::LayoutDirection direction);

// Draws a segmented control in a given state: a rounded track, a raised plate below the selected
// segment, hairlines between the others.
struct SegmentedControlPainter {
    static constexpr std::size_t kNoSegment = std::numeric_limits<std::size_t>::max();

    QRect rect;
    std::vector<QString> labels;
    Qt::LayoutDirection direction = Qt::LeftToRight;
    double plate = 0;  // the plate's position, in segments from the first
    std::size_t selected = 0;
    std::size_t hovered = kNoSegment;
    std::size_t pressed = kNoSegment;
    bool focused = false;
    bool enabled = true;
    bool dark = false;
    QColor accent;

    // Labels have the painter's font.
    void paint(QPainter& painter) const;

private:
    QColor ink(int lightAlpha, int darkAlpha) const;
    QRectF plateRect(const QPainter& painter, double position) const;
    void paintTrack(QPainter& painter) const;
    void paintSeparators(QPainter& painter) const;
    void paintHover(QPainter& painter) const;
    void paintPlate(QPainter& painter) const;
    void paintLabels(QPainter& painter) const;
};

}  // namespace quillet::platform
