#include "views/TodayTableView.h"

#include "platform/extension/Bundle.h"

namespace quillet {

TodayTableView::TodayTableView(QWidget* parent) : TableView(parent) {
    setAccessibleName(QString::fromStdString(platform::Bundle::main().localizedString("Messages")));
}

}  // namespace quillet
