#pragma once

#include <cstddef>
#include <functional>

namespace quillet::platform {

class TableRowView;
class TableCellView;
class Table;

enum class RowAnimation { None, SlideLeft, SlideRight };

// Provides the contents of a table. Main thread only.
class TableDelegate {
public:
    virtual ~TableDelegate() = default;
    virtual std::size_t numberOfRowsInTableView(Table& table) = 0;
    // Returns a new row view, which the table then owns.
    virtual TableRowView* tableView_rowViewForRow(Table& table, std::size_t row) = 0;
    // Returns a filled cell, either table.reusableCell(...) or a new one, which the table then
    // owns.
    virtual TableCellView* tableView_viewForTableColumn_row(Table& table, std::size_t row) = 0;
    // Called when the user has selected another row.
    virtual void tableViewSelectionDidChange() = 0;
};

// A table as its controller sees it, without the toolkit. Main thread only.
class Table {
public:
    static constexpr std::ptrdiff_t kNoRow = -1;
    // Returns the row that now shows what `row` showed before, or kNoRow.
    using RowMap = std::function<std::ptrdiff_t(std::size_t row)>;

    virtual ~Table() = default;
    virtual double rowHeight() const = 0;  // points
    virtual std::size_t numberOfRows() const = 0;
    virtual std::ptrdiff_t selectedRow() const = 0;  // kNoRow for none
    // Selects a row, or none for kNoRow, without telling the delegate.
    virtual void setSelectedRow(std::ptrdiff_t row) = 0;
    // Asks the delegate again for the number of rows, the row views and the cells. A running
    // removal ends first. Old cells can be reused. The selection and the keyboard stay at their
    // rows, if these still exist.
    virtual void reloadData() = 0;
    // Likewise, but the selection and the keyboard follow what their row showed, and a running
    // removal goes on if all rows keep their places. If the selected row is gone, nothing is
    // selected. If the row with the keyboard is gone, the table itself gets the keyboard, at the
    // same place or the last row, and no control of another row.
    virtual void reloadData(const RowMap& newRowOf) = 0;
    // Takes out one row, which the delegate must have removed already. It slides away while the
    // rows below move up. The selection stays with its row; if that is removed, nothing is
    // selected. A row beyond the last is ignored.
    virtual void removeRow(std::size_t row, RowAnimation animation) = 0;
};

}  // namespace quillet::platform
