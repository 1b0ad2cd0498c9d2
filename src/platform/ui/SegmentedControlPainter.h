#pragma once

#include <QColor>
#include <QRectF>
#include <QString>
#include <cstddef>
#include <limits>
#include <vector>

class QPainter;

namespace quillet::platform {

// The place of `position` (in segments from the first, which may lie between two) within a control
// of `count` segments. The edges of whole positions are whole points.
QRectF segmentSpan(const QRect& control,
                   std::size_t count,
                   double position,
                   Qt::LayoutDirection direction);

// What a segmented control looks like in a given state: a rounded track, a raised plate under the
// selected segment, hairlines between the others.
struct SegmentedControlPainter {
    static constexpr std::size_t kNoSegment = std::numeric_limits<std::size_t>::max();

    QRect rect;
    std::vector<QString> labels;
    Qt::LayoutDirection direction = Qt::LeftToRight;
    double plate = 0;  // where the plate is, in segments from the first
    std::size_t selected = 0;
    std::size_t hovered = kNoSegment;
    std::size_t pressed = kNoSegment;
    bool focused = false;
    bool enabled = true;
    bool dark = false;
    QColor accent;

    // The painter's font is that of the labels.
    void paint(QPainter& painter) const;

private:
    struct Colors;
    const Colors& colors() const;
    QRectF plateRect(const QPainter& painter, double position) const;
    void paintTrack(QPainter& painter) const;
    void paintSeparators(QPainter& painter) const;
    void paintHover(QPainter& painter) const;
    void paintPlate(QPainter& painter) const;
    void paintLabels(QPainter& painter) const;
};

}  // namespace quillet::platform
