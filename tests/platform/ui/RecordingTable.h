#pragma once

#include <QTest>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "platform/ui/ImageButton.h"
#include "platform/ui/TableView.h"
#include "platform/ui/TextField.h"
#include "tests/platform/ui/Rendering.h"

namespace quillet::test {

// A cell with a text and, at the right, the buttons "First" and "Second" (made in the other order).
class NamedCell : public platform::TableCellView {
public:
    NamedCell() {
        setIdentifier("cell");
        text->setGeometry(35, 10, 214, 20);
        second->setAccessibleName(QStringLiteral("Second"));
        second->setGeometry(280, 30, 20, 20);
        first->setAccessibleName(QStringLiteral("First"));
        first->setGeometry(252, 30, 20, 20);
    }
    QString accessibleRowName() const override { return text->displayedText(); }

    platform::TextField* text = new platform::TextField(this);
    platform::ImageButton* second = new platform::ImageButton(this);
    platform::ImageButton* first = new platform::ImageButton(this);
};

// An active window with a field before and after a table that shows `rows`. Records what happens
// as "selected 1;first of a;". The second button of a row removes it.
class RecordingTable : public platform::TableDelegate {
public:
    explicit RecordingTable(std::vector<std::string> names) : rows(std::move(names)) {
        window.resize(320, 640);
        table->setGeometry(0, 20, 320, 600);
        before->setFocusPolicy(Qt::TabFocus);
        after->setFocusPolicy(Qt::TabFocus);
        table->setRowHeight(60);
        table->setDelegate(self_);
        table->setClock([this] { return now; });
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        table->reloadData();
        pass(200);
    }

    std::size_t numberOfRowsInTableView(platform::Table& /*table*/) override { return rows.size(); }
    platform::TableRowView* tableView_rowViewForRow(platform::Table& /*table*/,
                                                    std::size_t /*row*/) override {
        return new platform::TableRowView;
    }
    platform::TableCellView* tableView_viewForTableColumn_row(platform::Table& /*table*/,
                                                              std::size_t row) override {
        auto* cell = static_cast<NamedCell*>(table->reusableCell("cell"));
        cell = cell != nullptr ? cell : new NamedCell;
        cell->text->setStringValue(rows[row]);
        const std::string name = rows[row];
        cell->first->setAction([=, this] { events += "first of " + name + ";"; });
        cell->second->setAction([=, this] {
            events += "second of " + name + ";";
            removeRow(static_cast<std::size_t>(table->rowOfView(cell)));
        });
        return cell;
    }
    void tableViewSelectionDidChange() override {
        events += "selected " + std::to_string(table->selectedRow()) + ";";
    }

    // Removes a row and holds its animation still.
    void removeRow(std::size_t row) {
        rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(row));
        table->removeRow(row, platform::RowAnimation::SlideRight);
        if (runningAnimation() != nullptr) {
            runningAnimation()->pause();
        }
    }
    // Shows other rows, of which row i showed row i − `moved` before.
    void reload(std::vector<std::string> names, std::ptrdiff_t moved) {
        rows = std::move(names);
        table->reloadData(
            [moved](std::size_t row) { return static_cast<std::ptrdiff_t>(row) + moved; });
    }
    // Lets time pass for the table and for what moves in it.
    void pass(int milliseconds) {
        now += std::chrono::milliseconds(milliseconds);
        if (table->isAnimating()) {
            runningAnimation()->setCurrentTime(milliseconds);
        }
    }

    // The texts and the tops of the rows on the screen: "a 0;b 60;".
    std::string shown() const {
        std::string found;
        for (std::size_t row = 0; row < table->numberOfRows(); ++row) {
            found += table->cellAtRow(row)->accessibleRowName().toStdString() + " " +
                     std::to_string(table->rowViewAtRow(row)->y()) + ";";
        }
        return found;
    }

    // Real mouse events at a place of the table (points), and what happened until their end.
    void press(QPoint place) {
        QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, place + table->pos());
    }
    void release(QPoint place) {
        QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, place + table->pos());
    }
    std::string click(QPoint place) {
        press(place);
        release(place);
        return takeEvents();
    }
    std::string takeEvents() { return std::exchange(events, {}); }

    std::chrono::steady_clock::time_point now;  // the table's clock
    std::vector<std::string> rows;
    std::string events;
    QWidget window;
    QWidget* before = new QWidget(&window);
    platform::TableView* table = new platform::TableView(&window);
    QWidget* after = new QWidget(&window);

private:
    std::shared_ptr<TableDelegate> self_{this, [](auto*) {}};  // the table holds it weakly
};

}  // namespace quillet::test
