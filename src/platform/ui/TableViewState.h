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

// What a table view keeps of its rows, its input and a running removal.
struct TableViewState {
    using Time = std::chrono::steady_clock::time_point;

    struct Row {
        TableRowView* view = nullptr;   // a child of the table
        TableCellView* cell = nullptr;  // a child of the row view; may be null
        Time changed;                   // when it last came to its place without moving there
    };

    bool hasRow(std::ptrdiff_t row) const {
        return row >= 0 && static_cast<std::size_t>(row) < rows.size();
    }
    std::ptrdiff_t lastRow() const { return static_cast<std::ptrdiff_t>(rows.size()) - 1; }

    std::weak_ptr<TableDelegate> delegate;
    std::function<Time()> clock = &std::chrono::steady_clock::now;
    double rowHeight = 20;  // points
    std::vector<Row> rows;
    std::vector<TableCellView*> pool;  // hidden children of the table; the last is taken first

    std::ptrdiff_t selected = Table::kNoRow;
    std::ptrdiff_t current = Table::kNoRow;  // where the keyboard stands
    std::ptrdiff_t pressed = Table::kNoRow;  // where the mouse button went down
    bool keyboardUsed = false;               // the user moves by keyboard and should see where

    // Runs out on the next turn of the event loop: a table that gets the focus is announced by the
    // toolkit when the table itself is done with it, and a screen reader stays with the last word.
    QTimer* announcement = nullptr;    // a child of the table
    QPointer<TableRowView> announced;  // the row that was announced last

    // A removal under way: the rows from `movingFrom` on move up by what is left of a row's height.
    ValueAnimation animation;
    QPointer<SlidingRow> slidingRow;  // a child of the table
    std::size_t movingFrom = 0;
    double progress = 1;
};

}  // namespace quillet::platform
