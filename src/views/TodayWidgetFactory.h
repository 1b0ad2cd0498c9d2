#pragma once

#include "widget/TodayViewFactory.h"

namespace quillet {

// Makes the views of a TodayViewController from widgets. Main thread only.
class TodayWidgetFactory final : public TodayViewFactory {
public:
    // The one factory: it has no state and never ends.
    static TodayWidgetFactory& shared();

    Tree makeTree(const std::shared_ptr<TodayViewController>& controller) override;
    platform::TableRowView* makeRowView(
        platform::Table& table, const std::shared_ptr<TodayViewController>& controller) override;
    platform::TableCellView* makeCell(platform::Table& table,
                                      const std::shared_ptr<TodayViewController>& controller,
                                      const std::shared_ptr<ExtensionMessage>& message) override;
};

}  // namespace quillet
