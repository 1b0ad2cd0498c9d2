#include "platform/ui/TextField.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "platform/ui/Accessibility.h"
#include "platform/ui/SingleLineText.h"

namespace quillet::platform {

namespace {

class TextFieldAccessible final : public QAccessibleWidget {
public:
    explicit TextFieldAccessible(TextField* field)
        : QAccessibleWidget(field, QAccessible::StaticText), field_(field) {}

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? QString::fromStdString(field_->stringValue())
                                         : QAccessibleWidget::text(kind);
    }

private:
    TextField* field_;
};

}  // namespace

TextField::TextField(QWidget* parent) : QWidget(parent), color_(palette().windowText().color()) {
    installAccessible<TextField, TextFieldAccessible>();
    measure();
}

void TextField::setStringValue(std::string_view text) {
    text_ = text;
    line_ = singleLineText(text);
    measure();
}

void TextField::setTextColor(const QColor& color) {
    color_ = color;
    update();
}

void TextField::setBackgroundColor(const QColor& color) {
    backgroundColor_ = color;
    update();
}

void TextField::setDrawsBackground(bool draws) {
    drawsBackground_ = draws;
    update();
}

void TextField::setFontSize(double points) {
    QFont sized;
    sized.setPixelSize(std::max(1, static_cast<int>(std::lround(points))));
    setFont(sized);
}

void TextField::measure() {
    const QFontMetricsF metrics(font());
    natural_ = QSize(static_cast<int>(std::ceil(metrics.horizontalAdvance(line_))),
                     static_cast<int>(std::ceil(metrics.height())));
    updateGeometry();
    update();
}

QString TextField::displayedText() const {
    if (natural_.width() <= width()) {
        return line_;
    }
    // ElideRight cuts the end of the text, which is at the left in right-to-left text.
    return QFontMetricsF(font()).elidedText(line_, Qt::ElideRight, width());
}

QSize TextField::sizeHint() const {
    return natural_;
}

QSize TextField::minimumSizeHint() const {
    return {0, natural_.height()};
}

void TextField::paintEvent(QPaintEvent* /*event*/) {
    const QString text = displayedText();
    QPainter painter(this);
    if (drawsBackground_ && backgroundColor_.isValid()) {
        painter.fillRect(rect(), backgroundColor_);
    }
    painter.setPen(color_);
    painter.setLayoutDirection(directionOf(line_));
    const Qt::Alignment side =
        layoutDirection() == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    const Qt::Alignment place = side | Qt::AlignAbsolute | Qt::AlignVCenter;
    painter.drawText(rect(), static_cast<int>(place) | Qt::TextSingleLine, text);
}

void TextField::changeEvent(QEvent* event) {
    if (event->type() == QEvent::FontChange) {
        measure();
    }
    QWidget::changeEvent(event);
}

}  // namespace quillet::platform
