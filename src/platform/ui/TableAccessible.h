#pragma once

#include <QAccessibleWidget>

namespace quillet::platform {

class TableRowView;
class TableView;

// A table as a screen reader sees it: a list whose items are the rows.
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

// A row as a screen reader sees it: an item named by its cell, with the cell's controls as
// children.
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
    // The table and the row's present index; a row on its way out has neither.
    struct Place {
        TableView* table = nullptr;
        std::size_t row = 0;
    };
    Place place() const;
    std::vector<QWidget*> controls() const;

    TableRowView* row_;
};

}  // namespace quillet::platform
