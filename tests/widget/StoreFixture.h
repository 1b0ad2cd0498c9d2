#pragma once

#include <cstdint>
#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/PendingBlocks.h"
#include "platform/desktop/UserDefaults.h"
#include "tests/support/LogCapture.h"
#include "tests/support/OwnContainer.h"
#include "tests/support/PropertyLists.h"
#include "widget/TodayViewController.h"

namespace quillet::test {

// A tree of one table, which nothing draws: it counts the rows that its delegate has and keeps a
// selection.
class PlainTable final : public platform::Table, public platform::ViewTree {
public:
    explicit PlainTable(std::weak_ptr<TodayViewController> delegate)
        : delegate_(std::move(delegate)) {}

    bool exists() const noexcept override { return true; }
    QWidget* root() const noexcept override { return nullptr; }
    void hide() override {}
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

class PlainViews final : public TodayViewFactory {
public:
    using Controller = std::shared_ptr<TodayViewController>;

    Tree makeTree(const Controller& controller) override {
        auto tree = std::make_unique<PlainTable>(controller);
        platform::Table* const table = tree.get();
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
};

// A message dictionary in XML; the sender is named like the message.
inline std::string messageXml(const std::string& messageId,
                              std::int64_t date,
                              std::int64_t folder = 1) {
    return "<dict><key>messageId</key><string>" + messageId + "</string><key>from</key><string>" +
           messageId + "</string><key>account</key><string>a@x</string><key>date</key><integer>" +
           std::to_string(date) + "</integer><key>folderStid</key><integer>" +
           std::to_string(folder) + "</integer></dict>";
}

// A message file in XML with the given message dictionaries.
inline std::string fileXml(const std::string& messages) {
    return xmlPropertyList(
        "<dict><key>folder</key><string>INBOX</string><key>account</key><string>a@x</string>"
        "<key>data</key><array>" +
        messages + "</array></dict>");
}

// A container of its own with the enabled accounts "a@x" and "b@x" and the disabled "off@x", and a
// controller over it whose queues run only when told to.
class StoreFixture : public ::testing::Test, protected OwnContainer {
protected:
    StoreFixture() {
        container.writeFile(
            "SharedData/Accounts.plist",
            xmlPropertyList(
                "<array><dict><key>mail</key><string>a@x</string><key>enabled</key><true/></dict>"
                "<dict><key>mail</key><string>b@x</string><key>enabled</key><integer>1</integer>"
                "</dict><dict><key>mail</key><string>off@x</string><key>enabled</key><false/></"
                "dict></array>"));
    }

    std::string writeFile(const std::string& account,
                          const std::string& name,
                          std::string_view bytes) {
        return container.writeFile("SharedData/Today/" + account + "/" + name, bytes);
    }
    static std::vector<std::string> identifiersOf(const ExtensionMessageList& messages) {
        std::vector<std::string> identifiers;
        if (messages) {
            for (const auto& message : *messages) {
                identifiers.push_back(message->messageId().value_or("none"));
            }
        }
        return identifiers;
    }
    std::vector<std::string> read() const {
        return identifiersOf(TodayViewController::updateData());
    }
    std::vector<std::string> shown() const { return identifiersOf(controller->dataToShow()); }
    // Returns the one answer to an update, which never comes inside the call.
    NCUpdateResult update() {
        std::vector<NCUpdateResult> answers;
        controller->widgetPerformUpdateWithCompletionHandler(
            [&](NCUpdateResult answer) { answers.push_back(answer); });
        EXPECT_TRUE(answers.empty());
        mainQueue.runAll();
        return answers.size() == 1 ? answers.front() : NCUpdateResultFailed;
    }

    LogCapture log;
    PendingBlocks mainQueue;
    PendingBlocks backgroundQueue;
    platform::VolatileUserDefaults defaults;
    PlainViews views;
    std::shared_ptr<TodayViewController> controller =
        TodayViewController::make({mainQueue, backgroundQueue, defaults, views});
};

}  // namespace quillet::test
