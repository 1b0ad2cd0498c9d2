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

// One column of rows of equal height, as high as its rows, without scrolling, header, grid or
// background. Where it is given less height, rows are cut off, not squeezed.
// Mouse: a press and release on one row selects it; controls of the cell keep their own clicks. A
// press on a row that does not stand still does nothing, on its controls neither.
// Keyboard: one Tab stop, arrows, Home and End move between rows, Return or Space selects; Tab
// then goes through the controls of the row's cell in visual order. A scroll area that holds the
// table keeps the row with the keyboard in sight. Screen readers see a list with an item a row.
// Main thread only.
class TableView : public QWidget, public Table {
    Q_OBJECT

public:
    explicit TableView(QWidget* parent = nullptr);
    ~TableView() override;

    void setDelegate(std::weak_ptr<TableDelegate> delegate);  // one that has ended counts as none
    void setRowHeight(double points);
    using Clock = std::function<std::chrono::steady_clock::time_point()>;
    void setClock(Clock clock);  // the system's steady clock unless set

    // A cell of this identifier that no row uses, or null.
    TableCellView* reusableCell(std::string_view identifier);
    TableCellView* cellAtRow(std::size_t row) const;      // null beyond the last row
    TableRowView* rowViewAtRow(std::size_t row) const;    // likewise
    std::ptrdiff_t rowOfView(const QWidget* view) const;  // the row that holds it, or kNoRow
    // The row that the keyboard stands on, or kNoRow.
    std::ptrdiff_t currentRow() const;
    // Where the keyboard stands in the table.
    struct Keyboard {
        std::ptrdiff_t row = kNoRow;      // the current row
        std::ptrdiff_t control = kNoRow;  // the focused control of its cell, in visual order
        bool hasFocus = false;            // of the window, also while that is not active
        bool isShown = false;             // the user moves by keyboard and should see where
    };
    Keyboard keyboard() const;
    // Puts the keyboard there: as near as the rows allow, and without selecting anything.
    void setKeyboard(const Keyboard& keyboard);
    // What a click on the row does: selects it and tells the delegate, unless it is selected.
    void clickRow(std::size_t row);
    // Whether the user has had the time to see what the row shows: it is not moving, and nothing
    // else came to its place within the last 200 ms. False beyond the last row.
    Q_INVOKABLE bool standsStill(qsizetype row) const;
    // The controls of a row that Tab reaches, in visual order.
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
    // The place of the keyboard is the current row, not the whole table: a scroll area that the
    // focus enters by Tab shows just this place.
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
