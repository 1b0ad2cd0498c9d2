#pragma once

#include <QColor>
#include <QWidget>
#include <string>
#include <string_view>

namespace quillet::platform {

// One line of plain text that ends in an ellipsis if it does not fit. Not editable, without frame,
// with a background only on request. Markup is shown literally, line breaks and other control
// characters become blanks, and bidirectional controls are dropped, so that the text cannot disturb
// its neighbours. The text runs in the direction of its own first letter and lies at the side where
// the widget's layout direction starts. Main thread only.
class TextField : public QWidget {
    Q_OBJECT

public:
    explicit TextField(QWidget* parent = nullptr);

    void setStringValue(std::string_view text);               // UTF-8
    const std::string& stringValue() const { return text_; }  // as it was set
    void setTextColor(const QColor& color);
    QColor textColor() const { return color_; }
    // Drawn only after setDrawsBackground(true).
    void setBackgroundColor(const QColor& color);
    void setDrawsBackground(bool draws);  // off at first
    // The system font in this size; one point is one device-independent pixel.
    void setFontSize(double points);
    // What is painted at the current width, including the ellipsis.
    QString displayedText() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void measure();

    std::string text_;
    QString line_;   // the text as one line
    QSize natural_;  // the size of the whole line
    QColor color_;
    QColor backgroundColor_;
    bool drawsBackground_ = false;
};

}  // namespace quillet::platform
