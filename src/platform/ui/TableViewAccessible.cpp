// The table for screen readers.

#include <QList>
#include <vector>

#include "platform/ui/Accessibility.h"
#include "platform/ui/TableView.h"

namespace quillet::platform {

namespace {

// A view with chosen views as its children.
class ParentAccessible : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;

    int childCount() const override { return static_cast<int>(children().size()); }
    QAccessibleInterface* child(int index) const override {
        return QAccessible::queryAccessibleInterface(children().value(index));
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        return child != nullptr ? static_cast<int>(children().indexOf(child->object())) : -1;
    }

protected:
    virtual QList<QObject*> children() const = 0;
};

// A list whose items are the rows.
class TableAccessible final : public ParentAccessible {
public:
    explicit TableAccessible(TableView* table)
        : ParentAccessible(table, QAccessible::List), table_(table) {}

    QAccessibleInterface* focusChild() const override {
        return table_->hasFocus() ? child(static_cast<int>(table_->currentRow()))
                                  : QAccessibleWidget::focusChild();
    }

private:
    QList<QObject*> children() const override {
        QList<QObject*> rows;
        for (std::size_t row = 0; row < table_->numberOfRows(); ++row) {
            rows.append(table_->rowViewAtRow(row));
        }
        return rows;
    }

    TableView* table_;
};

// An item that is named by its cell and has the cell's controls as children. A row that is being
// removed has neither.
class TableRowAccessible final : public ParentAccessible {
public:
    explicit TableRowAccessible(TableRowView* row)
        : ParentAccessible(row, QAccessible::ListItem), row_(row) {}

    QString text(QAccessible::Text kind) const override {
        const TableCellView* cell = table() != nullptr ? table()->cellAtRow(index()) : nullptr;
        return kind == QAccessible::Name && cell != nullptr ? cell->accessibleRowName()
                                                            : QAccessibleWidget::text(kind);
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.selectable = true;
        state.selected = row_->isSelected();
        state.focusable = true;
        state.focused =
            table() != nullptr && table()->hasFocus() &&
            table()->rowViewAtRow(static_cast<std::size_t>(table()->currentRow())) == row_;
        return state;
    }
    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString& name) override {
        if (name == pressAction() && table() != nullptr) {
            table()->clickRow(index());
        }
    }

private:
    // Null while the table ends.
    TableView* table() const { return qobject_cast<TableView*>(row_->parentWidget()); }
    // Beyond the last row for one that is being removed.
    std::size_t index() const { return static_cast<std::size_t>(table()->rowOfView(row_)); }
    QList<QObject*> children() const override {
        const auto controls =
            table() != nullptr ? table()->controlsOfRow(index()) : std::vector<QWidget*>{};
        return {controls.begin(), controls.end()};
    }

    TableRowView* row_;
};

}  // namespace

void TableView::installAccessibility() {
    installAccessible<TableView, TableAccessible>();
    installAccessible<TableRowView, TableRowAccessible>();
}

}  // namespace quillet::platform
