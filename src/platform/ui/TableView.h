#pragma once

#include <QWidget>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/presentation/Table.h"
#include "platform/ui/TableRowView.h"

class QAbstractButton;

namespace quillet::platform {

struct TableViewState;

// One column of rows of equal height, without scrolling, header, grid or background. Its height is
// that of its rows; with less, rows are cut off, not squeezed.
// Mouse: a press and release on one row selects it; controls of the cell get their own clicks. A
// press on a row that does not stand still, or on one of its controls, does nothing.
// Keyboard: one Tab stop. Arrows, Home and End move between rows, Return or Space selects, Tab goes
// on through the controls of the row's cell in visual order. A scroll area that holds the table
// keeps the current row visible. Screen readers see a list with one item for each row.
// Main thread only.
class TableView : public QWidget, public Table {
    Q_OBJECT

public:
    explicit TableView(QWidget* parent = nullptr);
    ~TableView() override;

    void setDelegate(std::weak_ptr<TableDelegate> delegate);  // held weakly
    void setRowHeight(double points);
    using Clock = std::function<std::chrono::steady_clock::time_point()>;
    void setClock(Clock clock);  // the system's steady clock unless set

    // Returns a cell of this identifier that no row uses, or null.
    TableCellView* reusableCell(std::string_view identifier);
    TableCellView* cellAtRow(std::size_t row) const;      // null beyond the last row
    TableRowView* rowViewAtRow(std::size_t row) const;    // likewise
    std::ptrdiff_t rowOfView(const QWidget* view) const;  // the row that holds it, or kNoRow
    // The row that keys act on, or kNoRow.
    std::ptrdiff_t currentRow() const;
    // The keyboard's place in the table.
    struct Keyboard {
        std::ptrdiff_t row = kNoRow;      // the current row
        std::ptrdiff_t control = kNoRow;  // the focused control of its cell, in visual order
        bool hasFocus = false;            // in its window, even if that is not active
        bool isShown = false;             // because the user moves by keyboard
    };
    Keyboard keyboard() const;
    // Moves the keyboard there, or as near as the rows allow, without selecting anything.
    void setKeyboard(const Keyboard& keyboard);
    // Selects a row as a click does: tells the delegate, unless the row is selected already.
    void clickRow(std::size_t row);
    // Whether the user had time to see the row: it is not moving, and what it shows came to its
    // place at least 200 ms ago. False beyond the last row.
    Q_INVOKABLE bool standsStill(qsizetype row) const;
    // Returns the controls of a row that Tab reaches, in visual order.
    std::vector<QWidget*> controlsOfRow(std::size_t row) const;

    // Ends a running removal at once.
    void settleAnimations();
    bool isAnimating() const;

    // Table
    double rowHeight() const override;
    std::size_t numberOfRows() const override;
    std::ptrdiff_t selectedRow() const override;
    void setSelectedRow(std::ptrdiff_t row) override;
    void reloadData() override;
    void reloadData(const RowMap& newRowOf) override;
    void removeRow(std::size_t row, RowAnimation animation) override;

    QSize sizeHint() const override;
    // Returns the current row as the cursor's place: a scroll area that the focus enters by Tab
    // shows that place only.
    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    static void installAccessibility();

    bool keepsItsRows(const RowMap& newRowOf) const;
    void replaceRows(const RowMap& newRowOf);
    void appendRow(TableDelegate& delegate);
    void retireRow(std::size_t row);
    void placeRows();
    void startRemoval(std::size_t row, const QPixmap& picture, RowAnimation animation);
    std::ptrdiff_t rowAt(QPoint point) const;
    long yetToMove() const;
    void rowsChanged();
    void noteChangesFrom(std::size_t row);
    void orderControls();

    std::ptrdiff_t rowForKey(int key) const;
    void setCurrentRow(std::ptrdiff_t row);
    void announceCurrentRow();
    QWidget* focusedControl() const;
    QAbstractButton* heldButton() const;
    QWidget* controlOfRow(std::ptrdiff_t row, std::ptrdiff_t control) const;
    std::ptrdiff_t controlNumber(const QWidget* control) const;
    void updateKeyboardMark();
    void noteReason(Qt::FocusReason reason);
    void scrollToKeyboard();
    bool focusControl(std::ptrdiff_t row, std::ptrdiff_t control, Qt::FocusReason reason);
    bool focusOutside(bool next);

    std::unique_ptr<TableViewState> state_;
};

}  // namespace quillet::platform
