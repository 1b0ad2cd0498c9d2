// The table for screen readers.

#include <algorithm>

#include "platform/ui/Accessibility.h"
#include "platform/ui/TableView.h"

namespace quillet::platform {

namespace {

// A list whose items are the rows.
class TableAccessible final : public QAccessibleWidget {
public:
    explicit TableAccessible(TableView* table);

    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* focusChild() const override;

private:
    TableView* table_;
};

// An item that is named by its cell and has the cell's controls as children.
class TableRowAccessible final : public QAccessibleWidget {
public:
    explicit TableRowAccessible(TableRowView* row);

    QString text(QAccessible::Text kind) const override;
    QAccessible::State state() const override;
    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QStringList actionNames() const override;
    void doAction(const QString& name) override;

private:
    // The table and the row's index; a row that is being removed has neither.
    struct Place {
        TableView* table = nullptr;
        std::size_t row = 0;
    };
    Place place() const;
    std::vector<QWidget*> controls() const;

    TableRowView* row_;
};

TableAccessible::TableAccessible(TableView* table)
    : QAccessibleWidget(table, QAccessible::List), table_(table) {}

int TableAccessible::childCount() const {
    return static_cast<int>(table_->numberOfRows());
}

QAccessibleInterface* TableAccessible::child(int index) const {
    TableRowView* row = index < 0 ? nullptr : table_->rowViewAtRow(static_cast<std::size_t>(index));
    return row != nullptr ? QAccessible::queryAccessibleInterface(row) : nullptr;
}

int TableAccessible::indexOfChild(const QAccessibleInterface* child) const {
    const auto* widget = child != nullptr ? qobject_cast<QWidget*>(child->object()) : nullptr;
    const std::ptrdiff_t row = table_->rowOfView(widget);
    const bool isRow =
        row != Table::kNoRow && table_->rowViewAtRow(static_cast<std::size_t>(row)) == widget;
    return isRow ? static_cast<int>(row) : -1;
}

QAccessibleInterface* TableAccessible::focusChild() const {
    if (table_->hasFocus()) {
        return child(static_cast<int>(table_->currentRow()));
    }
    return QAccessibleWidget::focusChild();
}

TableRowAccessible::TableRowAccessible(TableRowView* row)
    : QAccessibleWidget(row, QAccessible::ListItem), row_(row) {}

TableRowAccessible::Place TableRowAccessible::place() const {
    auto* table = qobject_cast<TableView*>(row_->parentWidget());
    const std::ptrdiff_t row = table != nullptr ? table->rowOfView(row_) : Table::kNoRow;
    return row == Table::kNoRow ? Place{} : Place{table, static_cast<std::size_t>(row)};
}

std::vector<QWidget*> TableRowAccessible::controls() const {
    const Place here = place();
    return here.table != nullptr ? here.table->controlsOfRow(here.row) : std::vector<QWidget*>{};
}

QString TableRowAccessible::text(QAccessible::Text kind) const {
    const Place here = place();
    const TableCellView* cell = here.table != nullptr ? here.table->cellAtRow(here.row) : nullptr;
    return kind == QAccessible::Name && cell != nullptr ? cell->accessibleRowName()
                                                        : QAccessibleWidget::text(kind);
}

QAccessible::State TableRowAccessible::state() const {
    QAccessible::State state = QAccessibleWidget::state();
    const Place here = place();
    state.selectable = true;
    state.selected = row_->isSelected();
    state.focusable = true;
    state.focused = here.table != nullptr && here.table->hasFocus() &&
                    here.table->currentRow() == static_cast<std::ptrdiff_t>(here.row);
    return state;
}

int TableRowAccessible::childCount() const {
    return static_cast<int>(controls().size());
}

QAccessibleInterface* TableRowAccessible::child(int index) const {
    const std::vector<QWidget*> widgets = controls();
    const bool inside = index >= 0 && static_cast<std::size_t>(index) < widgets.size();
    return inside ? QAccessible::queryAccessibleInterface(widgets[static_cast<std::size_t>(index)])
                  : nullptr;
}

int TableRowAccessible::indexOfChild(const QAccessibleInterface* child) const {
    const std::vector<QWidget*> widgets = controls();
    const auto found =
        std::find(widgets.begin(), widgets.end(), child != nullptr ? child->object() : nullptr);
    return found == widgets.end() ? -1 : static_cast<int>(found - widgets.begin());
}

QStringList TableRowAccessible::actionNames() const {
    return {pressAction()};
}

void TableRowAccessible::doAction(const QString& name) {
    const Place here = place();
    if (name == pressAction() && here.table != nullptr) {
        here.table->clickRow(here.row);
    }
}

}  // namespace

void TableView::installAccessibility() {
    installAccessible<TableView, TableAccessible>();
    installAccessible<TableRowView, TableRowAccessible>();
}

}  // namespace quillet::platform
