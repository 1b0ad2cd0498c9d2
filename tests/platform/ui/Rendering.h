#pragma once

#include <QImage>
#include <QWidget>

namespace quillet::test {

// What a widget paints on a transparent ground at a device pixel ratio; in device pixels.
inline QImage rendering(QWidget& widget, double devicePixelRatio) {
    QImage image((QSizeF(widget.size()) * devicePixelRatio).toSize(),
                 QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    widget.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    image.setDevicePixelRatio(1);
    return image;
}

inline constexpr double kDevicePixelRatios[] = {1, 1.25, 1.5, 2, 3};

}  // namespace quillet::test
