#pragma once

#include <QString>
#include <QWidget>
#include <string>

namespace quillet::platform {

// The contents of a row; reused for other rows under its identifier. Owned by the table.
class TableCellView : public QWidget {
    Q_OBJECT

public:
    explicit TableCellView(QWidget* parent = nullptr);

    void setIdentifier(std::string identifier) { identifier_ = std::move(identifier); }
    const std::string& identifier() const { return identifier_; }
    // What a screen reader calls the row.
    virtual QString accessibleRowName() const { return {}; }

private:
    std::string identifier_;
};

// The view behind a cell; draws the selection. Owned by the table.
class TableRowView : public QWidget {
    Q_OBJECT

public:
    explicit TableRowView(QWidget* parent = nullptr);

    bool isSelected() const { return selected_; }
    void setSelected(bool selected);
    // Whether the keyboard stands on the row and the user should see it.
    bool hasKeyboardMark() const { return keyboardMark_; }
    void setKeyboardMark(bool marked);

    // Draws the selection highlight over `rect`; the base draws the desktop's own.
    virtual void drawSelection(QPainter& painter, const QRect& rect);
    // Draws the mark of the row that the keyboard stands on, over the selection.
    virtual void drawKeyboardFocus(QPainter& painter, const QRect& rect);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool selected_ = false;
    bool keyboardMark_ = false;
};

}  // namespace quillet::platform
