#pragma once

#include <cstddef>
#include <functional>

namespace quillet::platform {

class TableRowView;
class TableCellView;
class Table;

enum class RowAnimation { None, SlideLeft, SlideRight };

// What a table asks its data source and delegate. Main thread.
class TableDelegate {
public:
    virtual ~TableDelegate() = default;
    virtual std::size_t numberOfRowsInTableView(Table& table) = 0;
    // A new row view, owned by the table from then on.
    virtual TableRowView* tableView_rowViewForRow(Table& table, std::size_t row) = 0;
    // A filled cell, either table.reusableCell(...) or a new one; owned by the table from then on.
    virtual TableCellView* tableView_viewForTableColumn_row(Table& table, std::size_t row) = 0;
    // The user selected another row.
    virtual void tableViewSelectionDidChange() = 0;

protected:
    TableDelegate() = default;
    TableDelegate(const TableDelegate&) = default;
    TableDelegate& operator=(const TableDelegate&) = default;
};

// What a controller needs of its table, free of the toolkit. Main thread only.
class Table {
public:
    static constexpr std::ptrdiff_t kNoRow = -1;
    // The row that now shows what `row` showed before; kNoRow where none does.
    using RowMap = std::function<std::ptrdiff_t(std::size_t row)>;

    virtual ~Table() = default;
    virtual double rowHeight() const = 0;  // points
    virtual std::size_t numberOfRows() const = 0;
    virtual std::ptrdiff_t selectedRow() const = 0;  // kNoRow for none
    // Selects a row (kNoRow: none) without telling the delegate.
    virtual void setSelectedRow(std::ptrdiff_t row) = 0;
    // Asks the delegate anew for the number of rows, the row views and the cells. A running
    // removal is settled first. Cells go back to the reuse pool. The selection and the place of
    // the keyboard stay where they are, as far as the row still exists.
    virtual void reloadData() = 0;
    // Likewise, but the selection and the keyboard follow what their row showed, and a running
    // removal goes on where all rows keep their places. A selected row that is gone leaves no
    // selection. Where the row with the keyboard is gone, no control of another row gets the
    // keyboard: the table itself takes it, at the same place or the last row.
    virtual void reloadData(const RowMap& newRowOf) = 0;
    // Takes out one row: it slides away while the rows below move up. The delegate's data no
    // longer has the row. Later rows, and the selection with them, count one less; a selected row
    // that is removed leaves no selection. A row beyond the last is ignored.
    virtual void removeRow(std::size_t row, RowAnimation animation) = 0;

protected:
    Table() = default;
    Table(const Table&) = default;
    Table& operator=(const Table&) = default;
};

}  // namespace quillet::platform
