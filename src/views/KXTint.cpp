#include "views/KXTint.h"

#include <QImage>
#include <QPainter>
#include <utility>
#include <vector>

namespace quillet::KXTint {

platform::Image kx_imageTintedWithColor(const platform::Image& image, const QColor& color) {
    if (!color.isValid() || image.size().isEmpty()) {
        return image;
    }
    std::vector<QImage> tinted;
    for (const QImage& representation : image.representations()) {
        QImage copy = representation.convertToFormat(QImage::Format_ARGB32_Premultiplied);
        QPainter painter(&copy);
        painter.setCompositionMode(QPainter::CompositionMode_SourceAtop);
        painter.fillRect(QRectF(QPointF(0, 0), copy.deviceIndependentSize()), color);
        painter.end();
        tinted.push_back(std::move(copy));
    }
    return platform::Image(std::move(tinted));
}

platform::Image tn_add_background_color_to_image(const platform::Image& image,
                                                 const QColor& color) {
    std::vector<QImage> plates;
    for (const QImage& representation : image.representations()) {
        QImage plate(representation.size(), QImage::Format_ARGB32_Premultiplied);
        plate.setDevicePixelRatio(representation.devicePixelRatio());
        plate.fill(color.isValid() ? color : QColor(Qt::white));
        QPainter painter(&plate);
        painter.drawImage(QPointF(0, 0), representation);
        painter.end();
        plates.push_back(std::move(plate));
    }
    return platform::Image(std::move(plates));
}

}  // namespace quillet::KXTint
