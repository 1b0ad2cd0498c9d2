#pragma once

#include <QWidget>
#include <functional>

#include "platform/desktop/Appearance.h"
#include "widget/NCWidgetProviding.h"

class QScrollArea;

namespace quillet {

class ScrollIndicator;
struct Theme;

// The frameless window at the right edge of the screen that the widget is shown in; a normal
// window where programs may not place themselves. As high as its contents, or as the screen, where
// it then scrolls. Main thread only.
class Panel : public QWidget {
public:
    Panel();

    // Shows the view, which stays its controller's; takeContents() gives it back and has to come
    // before the controller ends.
    void setContents(QWidget* view, const EdgeInsets& margins, platform::Look look);
    void takeContents();
    // Run when the user asks to put the panel away (Escape, or the window's close button).
    void setDismissed(std::function<void()> dismissed) { dismissed_ = std::move(dismissed); }
    // Brings the panel up, docked.
    void present();

    QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    QRect availableGeometry() const;
    QRect frame() const;  // the panel inside the window, which holds its shadow too
    void applyMargins();
    void fit();
    void followScreen();
    QPalette lookPalette() const;
    const Theme& theme() const;

    bool placesItself_;
    int shadow_ = 0;  // points that the window is larger than the panel on each side
    EdgeInsets insets_;
    QScrollArea* scrollArea_;
    ScrollIndicator* scrollIndicator_;
    QMetaObject::Connection screenConnection_;
    platform::Look look_ = platform::Look::Light;
    std::function<void()> dismissed_;
};

}  // namespace quillet
