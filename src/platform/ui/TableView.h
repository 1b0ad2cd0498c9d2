#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/ui/Table.h"

namespace quillet::platform {

// The contents of a row; reused for other rows under its identifier. Owned by the table.
class TableCellView : public QWidget {
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
public:
    explicit TableRowView(QWidget* parent = nullptr);

    bool isSelected() const { return selected_; }
    void setSelected(bool selected);

    // Draws the selection highlight over `rect`; the base draws the desktop's own.
    virtual void drawSelection(QPainter& painter, const QRect& rect);
    // Draws the mark of the row that the keyboard stands on, when it is not selected.
    virtual void drawKeyboardFocus(QPainter& painter, const QRect& rect);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool selected_ = false;
};

// One column of rows of equal height, as high as its rows, without scrolling, header or grid.
// Mouse: a click on a row selects it. Keyboard: one Tab stop, arrows, Home and End move between
// rows, Return or Space selects; Tab then goes through the controls of the row's cell. Screen readers
// see a list with an item a row. Main thread only.
class TableView : public QWidget, public Table {
public:
    explicit TableView(QWidget* parent = nullptr);
    ~TableView() override;

    void setDelegate(TableDelegate* delegate);  // not owned
    void setRowHeight(double points);

    // A cell of this identifier that no row uses, or null.
    TableCellView* reusableCell(std::string_view identifier);
    TableCellView* cellAtRow(std::size_t row) const;
    TableRowView* rowViewAtRow(std::size_t row) const;
    // Ends a running removal at once.
    void settleAnimations();
    bool isAnimating() const;

    // Table
    double rowHeight() const override;
    std::size_t numberOfRows() const override;
    std::ptrdiff_t selectedRow() const override;
    void setSelectedRow(std::ptrdiff_t row) override;
    void reloadData() override;
    void removeRow(std::size_t row, RowAnimation animation) override;

    QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
