#pragma once

#include <QPointer>
#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "platform/presentation/Table.h"
#include "platform/presentation/ValueAnimation.h"
#include "platform/ui/SlidingRow.h"
#include "platform/ui/TableRowView.h"

class QTimer;

namespace quillet::platform {

// The state of a table view: its rows, its input and a running removal.
struct TableViewState {
    using Time = std::chrono::steady_clock::time_point;

    struct Row {
        TableRowView* view = nullptr;   // a child of the table
        TableCellView* cell = nullptr;  // a child of the row view; may be null
        Time changed;                   // when it last came to its place without a movement
    };

    bool hasRow(std::ptrdiff_t row) const {
        return row >= 0 && static_cast<std::size_t>(row) < rows.size();
    }
    std::ptrdiff_t lastRow() const { return static_cast<std::ptrdiff_t>(rows.size()) - 1; }

    std::weak_ptr<TableDelegate> delegate;
    std::function<Time()> clock = &std::chrono::steady_clock::now;
    double rowHeight = 20;  // points
    std::vector<Row> rows;
    std::vector<TableCellView*> pool;  // hidden children of the table; the last is reused first

    std::ptrdiff_t selected = Table::kNoRow;
    std::ptrdiff_t current = Table::kNoRow;  // the keyboard's row
    std::ptrdiff_t pressed = Table::kNoRow;  // where the mouse button went down
    bool keyboardUsed = false;               // show the keyboard's row

    // Ends on the next turn of the event loop. The toolkit announces a table that gets the focus
    // after the table has handled it, and a screen reader keeps to the last announcement.
    QTimer* announcement = nullptr;    // a child of the table
    QPointer<TableRowView> announced;  // last, to screen readers

    // A running removal: the rows from `movingFrom` on move up by one row height.
    ValueAnimation animation;
    QPointer<SlidingRow> slidingRow;  // a child of the table
    std::size_t movingFrom = 0;
    double progress = 1;
};

}  // namespace quillet::platform
