#include "views/TodayWidgetFactory.h"

#include <QRect>
#include <cmath>

#include "platform/ui/ConstraintLayout.h"
#include "platform/ui/WidgetTree.h"
#include "views/FlippedView.h"
#include "views/Metrics.h"
#include "views/TodayHeaderView.h"
#include "views/TodayTableRowView.h"
#include "views/TodayTableView.h"
#include "views/TodayTableViewCell.h"

namespace quillet {

namespace {

constexpr const char* kCellIdentifier = "TodayTableViewCell";

// The tables that a TodayViewController asks for are those of makeTree.
platform::TableView& viewOf(platform::Table& table) {
    return static_cast<platform::TableView&>(table);
}

}  // namespace

TodayWidgetFactory& TodayWidgetFactory::shared() {
    static TodayWidgetFactory factory;
    return factory;
}

TodayViewFactory::Tree TodayWidgetFactory::makeTree(
    const std::shared_ptr<TodayViewController>& controller) {
    auto root = std::make_unique<FlippedView>(
        QRect(0, 0, Metrics::kWidgetWidth, Metrics::kFirstWidgetHeight));
    // The header is made first, so that Tab reaches it first.
    auto* header = new TodayHeaderView(controller, root.get());
    header->setDelegate(controller);
    auto* table = new TodayTableView(root.get());
    table->setRowHeight(Metrics::kRowHeight);
    table->setDelegate(controller);

    auto* layout = new platform::ConstraintLayout(root.get());
    layout->setSizeConstraint(QLayout::SetFixedSize);  // as high as its rows ask for
    for (const char* format : {"H:|-(0)-[myTableView(320)]-(0)-|",
                               "H:|-(0)-[myHeaderView(320)]-(0)-|",
                               "V:|-(0)-[myHeaderView(30)]-(5)-[myTableView]-(0)-|"}) {
        layout->addConstraints(format, {{"myTableView", table}, {"myHeaderView", header}});
    }
    auto height = std::make_shared<platform::LayoutConstraint>(Metrics::kFirstTableHeight);
    layout->addHeightConstraint(table, height);
    return {std::make_unique<platform::WidgetTree>(std::move(root)), table, header, height};
}

platform::TableRowView* TodayWidgetFactory::makeRowView(
    platform::Table& table, const std::shared_ptr<TodayViewController>& controller) {
    return new TodayTableRowView(QRect(0, 0, viewOf(table).width(), 0), controller);
}

platform::TableCellView* TodayWidgetFactory::makeCell(
    platform::Table& table,
    const std::shared_ptr<TodayViewController>& controller,
    const std::shared_ptr<ExtensionMessage>& message) {
    // Only TodayTableViewCells have this identifier.
    auto* cell = static_cast<TodayTableViewCell*>(viewOf(table).reusableCell(kCellIdentifier));
    if (cell == nullptr) {
        const int height = static_cast<int>(std::lround(table.rowHeight()));
        cell = new TodayTableViewCell(QRect(0, 0, controller->view()->width(), height));
        cell->setIdentifier(kCellIdentifier);
        cell->prepare(controller);
    }
    if (message) {
        cell->PopulateExtensionMessage(message);
    }
    return cell;
}

}  // namespace quillet
