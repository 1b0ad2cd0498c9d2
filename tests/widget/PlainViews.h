#pragma once

#include <algorithm>
#include <memory>
#include <utility>

#include "widget/TodayViewController.h"

namespace quillet::test {

// A table without views: it counts the rows that its delegate has and keeps a selection.
class PlainTable final : public platform::Table {
public:
    explicit PlainTable(std::weak_ptr<TodayViewController> delegate)
        : delegate_(std::move(delegate)) {}

    double rowHeight() const override { return 60; }
    std::size_t numberOfRows() const override { return rows_; }
    std::ptrdiff_t selectedRow() const override { return selected_; }
    void setSelectedRow(std::ptrdiff_t row) override { selected_ = row; }
    void reloadData() override { rows_ = delegate_.lock()->numberOfRowsInTableView(*this); }
    void reloadData(const RowMap& newRowOf) override {
        selected_ = selected_ == kNoRow ? kNoRow : newRowOf(static_cast<std::size_t>(selected_));
        reloadData();
    }
    void removeRow(std::size_t row, platform::RowAnimation /*animation*/) override {
        const auto removed = static_cast<std::ptrdiff_t>(row);
        --rows_;
        selected_ = selected_ == removed ? kNoRow : selected_ - (selected_ > removed ? 1 : 0);
    }

private:
    std::weak_ptr<TodayViewController> delegate_;
    std::size_t rows_ = 0;
    std::ptrdiff_t selected_ = kNoRow;
};

// Makes trees of one table, which nothing draws.
class PlainViews final : public TodayViewFactory {
public:
    using Controller = std::shared_ptr<TodayViewController>;

    Tree makeTree(const Controller& controller) override {
        auto tree = std::make_unique<PlainTree>(controller);
        platform::Table* table = &tree->table;
        return {std::move(tree), table, nullptr, std::make_shared<platform::LayoutConstraint>(50)};
    }
    platform::TableRowView* makeRowView(platform::Table&, const Controller&) override {
        return nullptr;
    }
    platform::TableCellView* makeCell(platform::Table&,
                                      const Controller&,
                                      const std::shared_ptr<ExtensionMessage>&) override {
        return nullptr;
    }

private:
    struct PlainTree final : platform::ViewTree {
        explicit PlainTree(const Controller& controller) : table(controller) {}
        bool exists() const noexcept override { return true; }
        QWidget* root() const noexcept override { return nullptr; }
        void hide() override {}

        PlainTable table;
    };
};

}  // namespace quillet::test
