#include "app/Panel.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "views/Theme.h"

namespace quillet {

namespace {

constexpr int kScreenMargin = 12;  // points between the panel and the edges of the screen

// Wayland leaves the place of a window to the desktop.
bool programsMayPlaceWindows() {
    return !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

QMargins marginsOf(const EdgeInsets& insets) {
    const auto rounded = [](double points) { return static_cast<int>(std::lround(points)); };
    return {
        rounded(insets.left), rounded(insets.top), rounded(insets.right), rounded(insets.bottom)};
}

}  // namespace

Panel::Panel() : placesItself_(programsMayPlaceWindows()), scrollArea_(new QScrollArea(this)) {
    if (placesItself_) {
        setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        setAttribute(Qt::WA_TranslucentBackground);
    }
    setWindowTitle(QStringLiteral("Quillet Today"));
    scrollArea_->setFrameShape(QFrame::NoFrame);
    scrollArea_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrollArea_->setWidgetResizable(true);
    scrollArea_->setFocusPolicy(Qt::NoFocus);
    scrollArea_->viewport()->setAutoFillBackground(false);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(scrollArea_);
}

void Panel::setContents(QWidget* view, const EdgeInsets& margins, platform::Look look) {
    look_ = look;
    layout()->setContentsMargins(marginsOf(margins));
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
    fit();
    show();
    raise();
    activateWindow();
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

QRect Panel::availableGeometry() const {
    const QRect whole = screen()->availableGeometry();
    return whole.adjusted(kScreenMargin, kScreenMargin, -kScreenMargin, -kScreenMargin);
}

void Panel::fit() {
    const QRect available = availableGeometry();
    const QSize wanted = sizeHint();
    const int height = std::min(wanted.height(), available.height());
    const bool scrolls = height < wanted.height();
    const int barWidth = scrolls ? scrollArea_->verticalScrollBar()->sizeHint().width() : 0;
    scrollArea_->setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAlwaysOn
                                                    : Qt::ScrollBarAlwaysOff);
    setFixedSize(wanted.width() + barWidth, height);
    if (placesItself_) {
        move(available.right() + 1 - width(), available.top());
    }
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
    painter.setBrush(theme().panelBackground);
    painter.setPen(theme().panelBorder);
    // The border runs through the middle of the outermost pixels.
    const qreal half = 0.5;
    painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half),
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
