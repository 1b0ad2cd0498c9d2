#pragma once

#include <QApplication>
#include <QImage>
#include <QVariantAnimation>
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

// The animation under way, which a test can pause and set to a time; null when nothing moves.
inline QVariantAnimation* runningAnimation() {
    for (auto* animation : qApp->findChildren<QVariantAnimation*>()) {
        if (animation->state() != QAbstractAnimation::Stopped) {
            return animation;
        }
    }
    return nullptr;
}

inline constexpr double kDevicePixelRatios[] = {1, 1.25, 1.5, 2, 3};

}  // namespace quillet::test
