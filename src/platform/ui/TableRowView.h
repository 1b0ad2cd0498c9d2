#pragma once

#include <QString>
#include <QWidget>
#include <string>

namespace quillet::platform {

// The contents of a row. Owned by the table, which reuses it for other rows by its identifier.
class TableCellView : public QWidget {
    Q_OBJECT

public:
    explicit TableCellView(QWidget* parent = nullptr);

    void setIdentifier(std::string identifier) { identifier_ = std::move(identifier); }
    const std::string& identifier() const { return identifier_; }
    // The row's name for screen readers.
    virtual QString accessibleRowName() const { return {}; }

private:
    std::string identifier_;
};

// The view behind a cell, which draws the selection. Owned by the table.
class TableRowView : public QWidget {
    Q_OBJECT

public:
    explicit TableRowView(QWidget* parent = nullptr);

    bool isSelected() const { return selected_; }
    void setSelected(bool selected);
    // Whether to show that the row is the keyboard's current one.
    bool hasKeyboardMark() const { return keyboardMark_; }
    void setKeyboardMark(bool marked);

    // Draws the selection over `rect`, by default with the desktop's highlight colour.
    virtual void drawSelection(QPainter& painter, const QRect& rect);
    // Draws the mark of the keyboard's current row over the selection.
    virtual void drawKeyboardFocus(QPainter& painter, const QRect& rect);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool selected_ = false;
    bool keyboardMark_ = false;
};

}  // namespace quillet::platform
