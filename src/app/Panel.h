#pragma once

#include <QWidget>
#include <functional>

#include "platform/desktop/Appearance.h"
#include "widget/NCWidgetProviding.h"

class QScrollArea;

namespace quillet {

struct Theme;

// The frameless window at the right edge of the screen that shows the widget; a normal window if
// programs may not place their windows. It is as high as its contents and scrolls if they are
// higher than the screen. Main thread only.
class Panel : public QWidget {
public:
    Panel();

    // Shows the view, which its controller owns. Call takeContents() before the controller ends.
    void setContents(QWidget* view, const EdgeInsets& margins, platform::Look look);
    void takeContents();
    // Called when the user dismisses the panel with Escape or the window's close button.
    void setDismissed(std::function<void()> dismissed) { dismissed_ = std::move(dismissed); }
    // Shows the panel at its place, with the keyboard.
    void present();

    QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    class ScrollIndicator;

    QRect availableGeometry() const;
    QRect frame() const;  // the panel inside the window, without its shadow
    void applyMargins();
    void fit();
    void followScreen();
    QPalette lookPalette() const;
    const Theme& theme() const;

    bool placesItself_;
    int shadow_ = 0;  // points by which the window is larger than the panel on each side
    EdgeInsets insets_;
    QScrollArea* scrollArea_;
    ScrollIndicator* scrollIndicator_;
    QMetaObject::Connection screenConnection_;
    platform::Look look_ = platform::Look::Light;
    std::function<void()> dismissed_;
};

}  // namespace quillet
