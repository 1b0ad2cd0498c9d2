#include "platform/ui/ImageButton.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "platform/ui/Accessibility.h"
#include "platform/ui/PixelAlignment.h"

namespace quillet::platform {

namespace {

constexpr double kBackRadius = 5;  // points
constexpr double kRingWidth = 2;   // points
constexpr double kPressedOpacityGain = 0.5;
// Middle grey is visible on light and on dark ground.
constexpr QColor kPressedPlate(128, 128, 128, 87);

}  // namespace

ImageButton::ImageButton(QWidget* parent) : QAbstractButton(parent) {
    installAccessible<ImageButton, ButtonAccessible>();
    setFocusPolicy(Qt::TabFocus);
    connect(this, &QAbstractButton::clicked, this, [this] {
        if (const std::function<void()> action = action_) {
            action();
        }
    });
}

void ImageButton::setImage(Image image) {
    image_ = std::move(image);
    updateGeometry();
    update();
}

void ImageButton::setAlphaValue(double alpha) {
    alpha_ = std::clamp(alpha, 0.0, 1.0);
    update();
}

void ImageButton::setAction(std::function<void()> action) {
    action_ = std::move(action);
}

QSize ImageButton::sizeHint() const {
    return image_.size().toSize();
}

void ImageButton::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    drawPlate(painter);
    drawImage(painter);
}

void ImageButton::drawPlate(QPainter& painter) const {
    const QRectF plate = alignedToPixels(painter, rect());
    if (isPressed()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(kPressedPlate);
        painter.drawRoundedRect(plate, kBackRadius, kBackRadius);
    }
    if (hasFocus()) {
        const double width = wholePixels(painter, kRingWidth);
        const double half = width / 2;
        painter.setPen(QPen(palette().color(QPalette::Highlight), width));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(
            plate.adjusted(half, half, -half, -half), kBackRadius - half, kBackRadius - half);
    }
}

void ImageButton::drawImage(QPainter& painter) const {
    QSizeF size = image_.size();
    if (size.isEmpty()) {
        return;
    }
    if (size.width() > width() || size.height() > height()) {
        size.scale(QSizeF(this->size()), Qt::KeepAspectRatio);
    }
    QRectF place(QPointF(), size);
    place.moveCenter(QRectF(rect()).center());
    painter.setOpacity(isPressed() ? std::min(1.0, alpha_ + kPressedOpacityGain) : alpha_);
    painter.drawImage(alignedToPixels(painter, place),
                      image_.representationFor(1 / pixelSize(painter)));
}

// Hiding the button ends a press: once the cell is reused, its release would mean another row.
void ImageButton::hideEvent(QHideEvent* event) {
    QAbstractButton::hideEvent(event);
    cancelPress(*this);
}

void cancelPress(QAbstractButton& button) {
    button.setDown(false);
    // The toolkit would press the button again as soon as the pointer moves. A release ends that,
    // and it is not a click, because the button is up.
    const QPointF outside(-1, -1);
    QMouseEvent release(QEvent::MouseButtonRelease,
                        outside,
                        button.mapToGlobal(outside),
                        Qt::LeftButton,
                        Qt::NoButton,
                        Qt::NoModifier);
    static_cast<QObject&>(button).event(&release);  // sendEvent would pass it to parents too
}

void ImageButton::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (!event->isAutoRepeat()) {
                click();
            }
            break;
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_Left:
        case Qt::Key_Right:
            event->ignore();  // for the container
            break;
        default:
            QAbstractButton::keyPressEvent(event);
    }
}

}  // namespace quillet::platform
