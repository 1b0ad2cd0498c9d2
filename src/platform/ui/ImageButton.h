#pragma once

#include <QAbstractButton>
#include <functional>

#include "platform/ui/Image.h"

namespace quillet::platform {

// A borderless button that shows an image in its centre at a given opacity. An image that is larger
// than the button is scaled down. A pressed button is less transparent and has a soft plate, a
// focused one has a ring. Tab reaches it, Space and Return press it; a click does not take the
// keyboard focus. Screen readers use accessibleName(). Main thread only.
class ImageButton : public QAbstractButton {
    Q_OBJECT

public:
    explicit ImageButton(QWidget* parent = nullptr);

    void setImage(Image image);
    void setAlphaValue(double alpha);  // 0 to 1, when not pressed
    void setAction(std::function<void()> action);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    bool isPressed() const { return isDown() && isEnabled(); }
    void drawPlate(QPainter& painter) const;
    void drawImage(QPainter& painter) const;

    Image image_;
    double alpha_ = 1.0;
    std::function<void()> action_;
};

// Takes back a press that has not ended. Neither its release nor a move of the pointer brings it
// back.
void cancelPress(QAbstractButton& button);

}  // namespace quillet::platform
