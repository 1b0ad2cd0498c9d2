#pragma once

#include <QTest>
#include <QWidget>
#include <algorithm>
#include <string>
#include <vector>

#include "platform/ui/ConstraintLayout.h"
#include "platform/ui/ImageButton.h"
#include "platform/ui/TableView.h"
#include "platform/ui/TextField.h"
#include "tests/platform/presentation/RunningAnimation.h"

namespace quillet::test {

// A cell with a text and, at the right, the buttons "first" and "second" (made in the other order).
class NamedCell : public platform::TableCellView {
public:
    NamedCell() {
        setIdentifier("cell");
        second->setAccessibleName(QStringLiteral("Second"));
        first->setAccessibleName(QStringLiteral("First"));
        const platform::ViewsByName views{{"text", text}, {"first", first}, {"second", second}};
        for (const char* line : {"H:|-(35)-[text]-(3)-[first(20)]-(8)-[second(20)]-(20)-|",
                                 "V:|-(10)-[text(20)]",
                                 "V:|-(30)-[first(20)]",
                                 "V:|-(30)-[second(20)]"}) {
            layout->addConstraints(line, views);
        }
    }
    QString accessibleRowName() const override {
        return QString::fromStdString(text->stringValue());
    }

    platform::ConstraintLayout* layout = new platform::ConstraintLayout(this);
    platform::TextField* text = new platform::TextField(this);
    platform::ImageButton* second = new platform::ImageButton(this);
    platform::ImageButton* first = new platform::ImageButton(this);
};

// A window with a field before and behind a table whose data are `rows`; writes down what happens.
class RecordingTable : public platform::TableDelegate {
public:
    explicit RecordingTable(std::vector<std::string> names) : rows(std::move(names)) {
        for (QWidget* neighbour : {before, behind}) {
            neighbour->setFocusPolicy(Qt::TabFocus);
        }
        before->setGeometry(0, 0, 320, 20);
        table = new platform::TableView(&window);
        table->setGeometry(0, 20, 320, 600);
        behind->setParent(&window);
        behind->setGeometry(0, 620, 320, 20);
        table->setRowHeight(60);
        table->setDelegate(self_);
        table->setClock([this] { return now; });
        window.resize(320, 640);
        window.show();
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window)) {
            events.emplace_back("the window is not active");
        }
        table->reloadData();
        pass(200);
    }
    RecordingTable(const RecordingTable&) = delete;
    RecordingTable& operator=(const RecordingTable&) = delete;

    std::size_t numberOfRowsInTableView(platform::Table& /*table*/) override { return rows.size(); }
    platform::TableRowView* tableView_rowViewForRow(platform::Table& /*table*/,
                                                    std::size_t /*row*/) override {
        return new platform::TableRowView;
    }
    platform::TableCellView* tableView_viewForTableColumn_row(platform::Table& /*table*/,
                                                              std::size_t row) override {
        auto* cell = static_cast<NamedCell*>(table->reusableCell("cell"));
        if (cell == nullptr) {
            cell = new NamedCell;
            ++cellsMade;
        }
        cell->text->setStringValue(rows[row]);
        cell->first->setAction([this, cell] { buttonClicked("first", *cell); });
        cell->second->setAction([this, cell] { buttonClicked("second", *cell); });
        return cell;
    }
    void tableViewSelectionDidChange() override {
        events.push_back("selected " + std::to_string(table->selectedRow()));
    }

    // The second button takes its row out, as an archive or delete button does.
    void buttonClicked(const std::string& button, const NamedCell& cell) {
        events.push_back(button + " of " + cell.text->stringValue());
        if (button == "second") {
            removeRow(static_cast<std::size_t>(table->rowOfView(&cell)));
        }
    }

    void removeRow(std::size_t row,
                   platform::RowAnimation how = platform::RowAnimation::SlideLeft) {
        rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(row));
        table->removeRow(row, how);
        if (table->isAnimating()) {
            animation()->pause();
        }
    }

    // Lets time pass for the table and for what moves in it.
    void pass(int milliseconds) {
        now += std::chrono::milliseconds(milliseconds);
        if (table->isAnimating()) {
            animation()->setCurrentTime(milliseconds);
        }
    }

    static QVariantAnimation* animation() { return runningAnimation(); }
    NamedCell* cell(std::size_t row) const {
        return static_cast<NamedCell*>(table->cellAtRow(row));
    }
    int rowTop(std::size_t row) const { return table->rowViewAtRow(row)->y(); }
    // The texts of the rows on the screen, from above.
    std::vector<std::string> shown() const {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < table->numberOfRows(); ++i) {
            names.push_back(cell(i)->text->stringValue());
        }
        return names;
    }

    // Real mouse events at a place of the table (points), with real hit-testing.
    void press(QPoint place) {
        QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, inWindow(place));
    }
    void release(QPoint place) {
        QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, inWindow(place));
    }
    void click(QPoint place) {
        press(place);
        release(place);
    }
    std::vector<std::string> takeEvents() { return std::exchange(events, {}); }

    std::chrono::steady_clock::time_point now;  // the table's clock
    std::vector<std::string> rows;
    std::vector<std::string> events;
    int cellsMade = 0;
    QWidget window;
    QWidget* before = new QWidget(&window);
    platform::TableView* table = nullptr;
    QWidget* behind = new QWidget;

private:
    static QPoint inWindow(QPoint place) { return place + QPoint(0, 20); }

    std::shared_ptr<TableDelegate> self_{this, [](auto*) {}};  // the table holds it weakly
};

}  // namespace quillet::test
