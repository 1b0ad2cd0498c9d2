#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/ExtensionMessage.h"
#include "platform/base/Atomic.h"
#include "platform/base/Queue.h"
#include "platform/desktop/UserDefaults.h"
#include "platform/presentation/LayoutConstraint.h"
#include "platform/presentation/Table.h"
#include "platform/presentation/ViewController.h"
#include "widget/NCWidgetProviding.h"
#include "widget/TodayViewFactory.h"

namespace quillet {

namespace platform {
struct Notification;
class SegmentedControl;
}  // namespace platform

// The widget's principal class: reads the message store, keeps the shown list and feeds the table.
//
// Main thread, except for Reload, updateData and the getters of the atomic properties, which any
// thread may call. Held by shared_ptr; views refer to it weakly.
class TodayViewController final : public platform::ViewController,
                                  public NCWidgetProviding,
                                  public platform::TableDelegate,
                                  public std::enable_shared_from_this<TodayViewController> {
public:
    // What the controller leans on; all of it outlives the controller.
    struct Services {
        platform::Queue& mainQueue;
        platform::Queue& backgroundQueue;
        platform::UserDefaults& defaults;
        TodayViewFactory& views;
    };

    static std::shared_ptr<TodayViewController> make(const Services& services);
    ~TodayViewController() override;

    // True in the dark look; fixed when the view tree is built.
    bool legacyDarkBackground() const noexcept { return my_legacyDarkBackground_; }

    // Everything the last read produced, newest first.
    ExtensionMessageList dataFromDisk() const { return dataFromDisk_.get(); }
    void setDataFromDisk(ExtensionMessageList messages) { dataFromDisk_.set(std::move(messages)); }
    // What the table shows; none until the first rebuild, which counts as empty.
    ExtensionMessageList dataToShow() const { return dataToShow_.get(); }
    void setDataToShow(ExtensionMessageList messages) { dataToShow_.set(std::move(messages)); }
    std::shared_ptr<platform::LayoutConstraint> viewHeightContraint() const {
        return viewHeightContraint_.get();
    }
    void setViewHeightContraint(std::shared_ptr<platform::LayoutConstraint> constraint) {
        viewHeightContraint_.set(std::move(constraint));
    }
    platform::Table* myTableView() const noexcept { return myTableView_; }
    TodayHeaderView* myHeaderView() const noexcept { return myHeaderView_; }
    platform::UserDefaults& defaults() const noexcept { return services_.defaults; }

    // Life of the view tree.
    void loadView() override;

    // "ACTION_CALLED_EXTENSION": a message that is archived or deleted leaves both lists at once,
    // and its row slides out on the next turn of the main queue.
    void actionCalled(const platform::Notification& notification);
    // Removes every message equal to this one from both lists. The store keeps it, and the next
    // read that finds it there brings it back.
    void removeMessage(const ExtensionMessage& message);

    void viewDidLoad() override;
    void viewWillAppear() override;
    void dismissViewController(platform::ViewController& viewController) override;

    // Reads the whole store under coordination: the messages of all enabled accounts, newest first;
    // never none. Blocks until the host's writers are done. Any thread.
    static ExtensionMessageList updateData();
    // Reads, and rebuilds the list only if something changed. Any thread.
    void Reload();
    // Schedules the rebuild of the shown list on the main queue.
    void ReloadData();
    // Schedules the adjustment of the table's height to its rows on the main queue.
    void Resize();
    // The body of ReloadData: derives the shown list from dataFromDisk and the stored segment.
    void rebuildList();

    // The header's segment changed; the new one is stored already.
    void selectedSegment(platform::SegmentedControl* control);
    // The host application has posted that the store changed.
    void widget_noty_update();

    // ExtensionUtilities::directoryContent.
    static std::optional<std::vector<std::string>> directoryContent(const std::string& path);

    // NCWidgetProviding
    void widgetPerformUpdateWithCompletionHandler(CompletionHandler completionHandler) override;
    EdgeInsets widgetMarginInsetsForProposedMarginInsets(EdgeInsets proposed) const override;
    bool widgetAllowsEditing() const override;
    void widgetDidBeginEditing() override;
    void widgetDidEndEditing() override;

    // TableDelegate
    std::size_t numberOfRowsInTableView(platform::Table& table) override;
    platform::TableRowView* tableView_rowViewForRow(platform::Table& table,
                                                    std::size_t row) override;
    platform::TableCellView* tableView_viewForTableColumn_row(platform::Table& table,
                                                              std::size_t row) override;
    void tableViewSelectionDidChange() override;

private:
    explicit TodayViewController(const Services& services);

    void adjustHeight();
    void slideOutRemovedRows();
    std::ptrdiff_t rowAfterRebuild(std::size_t row, const ExtensionMessageList& before) const;

    Services services_;
    platform::Table* myTableView_ = nullptr;   // a TodayTableView, owned by the view tree
    TodayHeaderView* myHeaderView_ = nullptr;  // owned by the view tree
    bool my_legacyDarkBackground_ = false;
    // Rows that the table still has and the shown list has lost. Each index counts without the rows
    // that are listed before it.
    std::vector<std::pair<std::size_t, platform::RowAnimation>> removedRows_;
    platform::Atomic<ExtensionMessageList> dataFromDisk_;
    platform::Atomic<ExtensionMessageList> dataToShow_;
    platform::Atomic<std::shared_ptr<platform::LayoutConstraint>> viewHeightContraint_;
};

}  // namespace quillet
