#include "app/Panel.h"

#include <QAccessibleWidget>
#include <QBitmap>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPalette>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "app/PanelShadow.h"
#include "platform/desktop/Display.h"
#include "platform/ui/WindowHints.h"
#include "views/Theme.h"

namespace quillet {

namespace {

// Points between the panel and the edges of the screen, just enough for the shadow.
constexpr int kScreenMargin = Theme::kPanelShadowRadius;

constexpr int kBarWidth = 4;      // points
constexpr int kBarMargin = 3;     // points to the edge
constexpr int kShortestBar = 24;  // points

// On Wayland the desktop places all windows.
bool programsMayPlaceWindows() {
    return !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

int rounded(double points) {
    return static_cast<int>(std::lround(points));
}

// The panel's shape in whole points: what takes clicks, and without a compositor all that is seen.
QRegion solidShape(const QRect& panel) {
    QBitmap bitmap(panel.size());
    bitmap.fill(Qt::color0);
    QPainter painter(&bitmap);
    painter.setBrush(Qt::color1);
    painter.setPen(Qt::NoPen);
    painter.drawRoundedRect(bitmap.rect(), Theme::kPanelCornerRadius, Theme::kPanelCornerRadius);
    painter.end();
    return QRegion(bitmap).translated(panel.topLeft());
}

}  // namespace

// A thin bar over the right edge of a scroll area that shows which part of the contents is visible.
// It takes no room and no clicks, and is invisible while everything fits.
class Panel::ScrollIndicator final : public QWidget {
public:
    // `area` owns it.
    explicit ScrollIndicator(QScrollArea* area) : QWidget(area), area_(area) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        const QScrollBar* bar = area->verticalScrollBar();
        connect(bar, &QScrollBar::valueChanged, this, qOverload<>(&QWidget::update));
        connect(bar, &QScrollBar::rangeChanged, this, qOverload<>(&QWidget::update));
    }

    void setColor(const QColor& color) {
        color_ = color;
        update();
    }
    // Moves to its place over the area. Call it after each change of the area's size.
    void place() {
        const int width = kBarWidth + 2 * kBarMargin;
        const int left = layoutDirection() == Qt::RightToLeft ? 0 : area_->width() - width;
        setGeometry(left, 0, width, area_->height());
        raise();
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        const QScrollBar* bar = area_->verticalScrollBar();
        const double range = bar->maximum() - bar->minimum();
        if (range <= 0) {
            return;
        }
        const double track = height() - 2 * kBarMargin;
        const double length =
            std::max<double>(kShortestBar, track * bar->pageStep() / (range + bar->pageStep()));
        const double top = kBarMargin + (track - length) * (bar->value() - bar->minimum()) / range;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color_);
        constexpr double kRadius = kBarWidth / 2.0;
        painter.drawRoundedRect(QRectF(kBarMargin, top, kBarWidth, length), kRadius, kRadius);
    }

private:
    QScrollArea* area_;
    QColor color_;
};

Panel::Panel()
    : placesItself_(programsMayPlaceWindows()),
      scrollArea_(new QScrollArea(this)),
      scrollIndicator_(new ScrollIndicator(scrollArea_)) {
    if (placesItself_) {
        setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        setAttribute(Qt::WA_TranslucentBackground);
    }
    setWindowTitle(QStringLiteral("Quillet Today"));
    // Makes screen readers treat the widget as a window, named by its title.
    QAccessible::registerAccessibleInterface(new QAccessibleWidget(this, QAccessible::Window));
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the toolkit's registry owns it
    scrollArea_->setFrameShape(QFrame::NoFrame);
    scrollArea_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrollArea_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);  // the indicator replaces it
    scrollArea_->setWidgetResizable(true);
    scrollArea_->setFocusPolicy(Qt::NoFocus);
    scrollArea_->viewport()->setAutoFillBackground(false);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(scrollArea_);
}

void Panel::setContents(QWidget* view, const EdgeInsets& margins, platform::Look look) {
    look_ = look;
    insets_ = margins;
    setPalette(lookPalette());
    scrollIndicator_->setColor(theme().dateText);
    applyMargins();
    scrollArea_->setWidget(view);
    view->setAutoFillBackground(false);
    view->installEventFilter(this);
    fit();
    update();
}

void Panel::takeContents() {
    scrollArea_->takeWidget();
}

void Panel::present() {
    shadow_ = placesItself_ && platform::isCompositing() ? Theme::kPanelShadowRadius : 0;
    applyMargins();
    create();
    fit();
    platform::leaveOutOfTaskbars(*windowHandle());
    show();
    followScreen();
    raise();
    activateWindow();
    // The keyboard starts before the first control, so that none is marked until Tab is pressed.
    setFocus();
}

QSize Panel::sizeHint() const {
    const QMargins margins = layout()->contentsMargins();
    const QSize frame(margins.left() + margins.right(), margins.top() + margins.bottom());
    const QWidget* view = scrollArea_->widget();
    return (view != nullptr ? view->sizeHint() : QSize(0, 0)) + frame;
}

const Theme& Panel::theme() const {
    return Theme::of(look_ == platform::Look::Dark);
}

void Panel::applyMargins() {
    layout()->setContentsMargins(rounded(insets_.left) + shadow_,
                                 rounded(insets_.top) + shadow_,
                                 rounded(insets_.right) + shadow_,
                                 rounded(insets_.bottom) + shadow_);
}

QRect Panel::frame() const {
    return rect().adjusted(shadow_, shadow_, -shadow_, -shadow_);
}

// Where the window may lie: the screen without the margin that the shadow does not fill.
QRect Panel::availableGeometry() const {
    const int margin = kScreenMargin - shadow_;
    return screen()->availableGeometry().adjusted(margin, margin, -margin, -margin);
}

void Panel::fit() {
    const QRect available = availableGeometry();
    const QSize wanted = sizeHint();
    setFixedSize(wanted.width(), std::min(wanted.height(), available.height()));
    layout()->activate();
    scrollIndicator_->place();
    if (placesItself_ && windowHandle() != nullptr) {
        move(available.right() + 1 - width(), available.top());
        const QRegion shape = solidShape(frame());
        shadow_ == 0 ? setMask(shape) : clearMask();
        platform::setInputRegion(*windowHandle(), shape);
    }
}

// Refits the panel when its screen changes size, goes away or loses room to a desktop bar.
void Panel::followScreen() {
    disconnect(screenConnection_);
    screenConnection_ = connect(screen(), &QScreen::availableGeometryChanged, this, &Panel::fit);
}

// The colours of what the toolkit draws by itself, such as tooltips.
QPalette Panel::lookPalette() const {
    QPalette palette = QGuiApplication::palette();
    for (const auto role : {QPalette::Window, QPalette::Base, QPalette::ToolTipBase}) {
        palette.setColor(role, theme().panelBackground);
    }
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ToolTipText}) {
        palette.setColor(role, theme().senderText);
    }
    return palette;
}

bool Panel::event(QEvent* event) {
    const bool handled = QWidget::event(event);
    if (event->type() == QEvent::ScreenChangeInternal && isVisible()) {
        followScreen();
        fit();
    }
    return handled;
}

bool Panel::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::LayoutRequest && watched == scrollArea_->widget()) {
        fit();
    }
    return QWidget::eventFilter(watched, event);
}

void Panel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    if (!placesItself_) {
        painter.fillRect(rect(), theme().panelBackground);
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    if (shadow_ > 0) {
        paintPanelShadow(painter, frame(), theme().panelShadow);
    }
    painter.setBrush(theme().panelBackground);
    painter.setPen(theme().panelBorder);
    // The border runs through the middle of the outermost pixels.
    const qreal half = 0.5;
    painter.drawRoundedRect(QRectF(frame()).adjusted(half, half, -half, -half),
                            Theme::kPanelCornerRadius,
                            Theme::kPanelCornerRadius);
}

void Panel::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && dismissed_) {
        dismissed_();
        return;
    }
    QWidget::keyPressEvent(event);
}

void Panel::closeEvent(QCloseEvent* event) {
    event->ignore();
    if (dismissed_) {
        dismissed_();
    }
}

}  // namespace quillet
