#pragma once

#include <memory>

#include "model/ExtensionMessage.h"
#include "platform/presentation/LayoutConstraint.h"
#include "platform/presentation/Table.h"
#include "platform/presentation/ViewController.h"

namespace quillet {

class TodayHeaderView;
class TodayViewController;

// Makes the views that a TodayViewController asks for. The controller's logic needs no toolkit
// because of it; the views themselves are in src/views. Main thread only.
class TodayViewFactory {
public:
    struct Tree {
        std::unique_ptr<platform::ViewTree> views;
        platform::Table* table;   // owned by the tree; its delegate is the controller, held weakly
        TodayHeaderView* header;  // likewise
        std::shared_ptr<platform::LayoutConstraint> tableHeight;
    };

    virtual ~TodayViewFactory() = default;
    // The whole tree in the controller's look, with an empty table.
    virtual Tree makeTree(const std::shared_ptr<TodayViewController>& controller) = 0;
    // A new row view for the table, which owns it from then on.
    virtual platform::TableRowView* makeRowView(
        platform::Table& table, const std::shared_ptr<TodayViewController>& controller) = 0;
    // A cell that shows `message`, or whatever it showed before for none: one that the table can
    // use again, else a new one, which the table owns from then on.
    virtual platform::TableCellView* makeCell(
        platform::Table& table,
        const std::shared_ptr<TodayViewController>& controller,
        const std::shared_ptr<ExtensionMessage>& message) = 0;
};

}  // namespace quillet
