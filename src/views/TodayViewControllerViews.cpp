// The operations of the controller that make views.

#include <QRect>
#include <cmath>
#include <memory>
#include <vector>

#include "platform/base/NotificationCenter.h"
#include "platform/ui/ConstraintLayout.h"
#include "views/FlippedView.h"
#include "views/Metrics.h"
#include "views/TodayHeaderView.h"
#include "views/TodayTableRowView.h"
#include "views/TodayTableView.h"
#include "views/TodayTableViewCell.h"
#include "widget/ExtensionUtilities.h"
#include "widget/TodayViewController.h"

namespace quillet {

namespace {

constexpr const char* kCellIdentifier = "TodayTableViewCell";

}  // namespace

void TodayViewController::loadView() {
    my_legacyDarkBackground_ = darkAppearance();
    setDataFromDisk(std::make_shared<const ExtensionMessageList::element_type>());

    auto root = std::make_unique<FlippedView>(
        QRect(0, 0, Metrics::kWidgetWidth, Metrics::kFirstWidgetHeight));
    // The header is made first, so that Tab reaches it first.
    auto* header = new TodayHeaderView(shared_from_this(), root.get());
    header->setDelegate(shared_from_this());
    auto* table = new TodayTableView(root.get());
    table->setRowHeight(Metrics::kRowHeight);
    table->setDelegate(weak_from_this());

    auto* layout = new platform::ConstraintLayout(root.get());
    layout->setSizeConstraint(QLayout::SetFixedSize);  // as high as its rows ask for
    for (const char* format : {"H:|-(0)-[myTableView(320)]-(0)-|",
                               "H:|-(0)-[myHeaderView(320)]-(0)-|",
                               "V:|-(0)-[myHeaderView(30)]-(5)-[myTableView]-(0)-|"}) {
        layout->addConstraints(format, {{"myTableView", table}, {"myHeaderView", header}});
    }
    auto height = std::make_shared<platform::LayoutConstraint>(Metrics::kFirstTableHeight);
    layout->addHeightConstraint(table, height);

    setViewHeightContraint(std::move(height));
    myHeaderView_ = header;
    myTableView_ = table;
    setView(std::move(root));

    auto& center = platform::NotificationCenter::defaultCenter();
    center.removeObserver(this);  // a second call must not register twice
    center.addObserver(this,
                       ExtensionUtilities::kActionCalledNotification,
                       [weak = weak_from_this()](const platform::Notification& notification) {
                           if (const auto self = weak.lock()) {
                               self->actionCalled(notification);
                           }
                       });
}

platform::TableRowView* TodayViewController::tableView_rowViewForRow(platform::Table& table,
                                                                     std::size_t /*row*/) {
    const int width = static_cast<platform::TableView&>(table).width();
    return new TodayTableRowView(QRect(0, 0, width, 0), shared_from_this());
}

platform::TableCellView* TodayViewController::tableView_viewForTableColumn_row(
    platform::Table& table, std::size_t row) {
    // Only TodayTableViews have this delegate, and only TodayTableViewCells this identifier.
    auto* cell = static_cast<TodayTableViewCell*>(
        static_cast<platform::TableView&>(table).reusableCell(kCellIdentifier));
    if (cell == nullptr) {
        const int height = static_cast<int>(std::lround(table.rowHeight()));
        cell = new TodayTableViewCell(QRect(0, 0, view()->width(), height));
        cell->setIdentifier(kCellIdentifier);
        cell->prepare(shared_from_this());
    }
    const ExtensionMessageList messages = dataToShow();
    if (messages && row < messages->size()) {
        cell->PopulateExtensionMessage((*messages)[row]);
    }
    return cell;
}

}  // namespace quillet
