#include "widget/TodayViewController.h"

#include <algorithm>
#include <any>
#include <iterator>
#include <utility>

#include "model/Accounts.h"
#include "model/ContainerPaths.h"
#include "model/HostInterface.h"
#include "platform/base/Log.h"
#include "platform/base/NotificationCenter.h"
#include "platform/desktop/DistributedNotificationCenter.h"
#include "platform/files/FileCoordinator.h"
#include "platform/files/Path.h"
#include "platform/presentation/AnimationContext.h"
#include "widget/HostCommands.h"
#include "widget/MessageList.h"
#include "widget/MessageStore.h"

namespace quillet {

using MessageList::Messages;
using platform::DistributedNotificationCenter;

namespace {

MessageStore::EnabledAccounts enabledAccounts() {
    MessageStore::EnabledAccounts enabled;
    for (const auto& account : ExtensionUtilities::Accounts()) {
        if (const auto mail = account->mail(); mail && account->enabled()) {
            enabled.insert(*mail);
        }
    }
    return enabled;
}

std::size_t countOf(const ExtensionMessageList& list) {
    return list ? list->size() : 0;
}

// The row of the first message equal to this one, or kNoRow.
std::ptrdiff_t rowOf(const ExtensionMessage& message, const ExtensionMessageList& list) {
    for (std::size_t row = 0; row < countOf(list); ++row) {
        if ((*list)[row]->isEqual(&message)) {
            return static_cast<std::ptrdiff_t>(row);
        }
    }
    return platform::Table::kNoRow;
}

// The list without the messages equal to this one; none stays none.
ExtensionMessageList without(const ExtensionMessage& message, const ExtensionMessageList& list) {
    if (!list) {
        return list;
    }
    Messages kept;
    kept.reserve(list->size());
    std::ranges::copy_if(*list, std::back_inserter(kept), [&message](const auto& candidate) {
        return !candidate->isEqual(&message);
    });
    return std::make_shared<const Messages>(std::move(kept));
}

}  // namespace

std::shared_ptr<TodayViewController> TodayViewController::make(const Services& services) {
    return std::shared_ptr<TodayViewController>(new TodayViewController(services));
}

TodayViewController::TodayViewController(const Services& services)
    : services_(services), dataFromDisk_(std::make_shared<const Messages>()) {}

// The registered blocks hold the controller weakly and would do nothing, but each change of the
// look would leave a dead registration.
TodayViewController::~TodayViewController() {
    platform::NotificationCenter::defaultCenter().removeObserver(this);
    if (isViewLoaded()) {
        DistributedNotificationCenter::defaultCenter().removeObserver(this);
    }
}

void TodayViewController::loadView() {
    my_legacyDarkBackground_ = darkAppearance();
    setDataFromDisk(std::make_shared<const Messages>());
    TodayViewFactory::Tree tree = services_.views.makeTree(shared_from_this());
    setViewHeightContraint(std::move(tree.tableHeight));
    myHeaderView_ = tree.header;
    myTableView_ = tree.table;
    setView(std::move(tree.views));

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

void TodayViewController::actionCalled(const platform::Notification& notification) {
    const auto* action = std::any_cast<ExtensionUtilities::CalledAction>(&notification.object);
    if (action == nullptr || !action->message ||
        (action->command != ExtensionUtilities::commandArchive &&
         action->command != ExtensionUtilities::commandDelete)) {
        return;
    }
    const std::ptrdiff_t row = rowOf(*action->message, dataToShow());
    if (row == platform::Table::kNoRow) {
        return;
    }
    removeMessage(*action->message);
    removedRows_.emplace_back(static_cast<std::size_t>(row),
                              action->command == ExtensionUtilities::commandArchive
                                  ? platform::RowAnimation::SlideLeft
                                  : platform::RowAnimation::SlideRight);
    services_.mainQueue.async([self = shared_from_this()] { self->slideOutRemovedRows(); });
}

// The height stays until the next rebuild on purpose: the panel must not jump under the pointer of
// somebody who deletes one row after another.
void TodayViewController::slideOutRemovedRows() {
    for (const auto& [row, animation] : std::exchange(removedRows_, {})) {
        if (myTableView_ != nullptr) {
            myTableView_->removeRow(row, animation);
        }
    }
}

void TodayViewController::removeMessage(const ExtensionMessage& message) {
    // A reread in the background may set the list at the same time.
    dataFromDisk_.update([&](const auto& list) { return without(message, list); });
    setDataToShow(without(message, dataToShow()));
}

void TodayViewController::viewDidLoad() {
    ViewController::viewDidLoad();
    auto& center = DistributedNotificationCenter::defaultCenter();
    center.removeObserver(this);  // a second call must not register twice
    center.addObserver(this,
                       kStoreNotificationName,
                       kStoreNotificationObject,
                       [weak = weak_from_this()](const auto&, const auto&) {
                           if (const auto self = weak.lock()) {
                               self->widget_noty_update();
                           }
                       });
}

void TodayViewController::viewWillAppear() {
    ViewController::viewWillAppear();
    Reload();
}

void TodayViewController::dismissViewController(platform::ViewController& viewController) {
    ViewController::dismissViewController(viewController);
}

ExtensionMessageList TodayViewController::updateData() {
    MessageStore store(enabledAccounts());
    const std::optional<std::string> dataFolder = ExtensionUtilities::GroupDataPath();
    if (!dataFolder) {
        return std::make_shared<const Messages>();
    }
    const auto error =
        platform::FileCoordinator(dataFolder)
            .coordinateReading(platform::Path::appendingPathComponent(
                                   *dataFolder, ExtensionUtilities::kTodayFolder),
                               [&store](const std::string& path) { store.read(path); });
    if (error) {
        platform::Log::write("updateData coordinator %@", {error->description()});
    }
    return std::make_shared<const Messages>(MessageList::sortedNewestFirst(store.records()));
}

void TodayViewController::Reload() {
    ExtensionMessageList messages = updateData();
    if (!MessageList::isEqual(*messages, *dataFromDisk())) {
        setDataFromDisk(std::move(messages));
        ReloadData();
    }
}

void TodayViewController::ReloadData() {
    services_.mainQueue.async([self = shared_from_this()] { self->rebuildList(); });
}

void TodayViewController::rebuildList() {
    slideOutRemovedRows();  // so that the table's rows are those of the list before
    const ExtensionMessageList before = dataToShow();
    const auto segmented = services_.defaults.integerForKey(MessageList::kSegmentedPreference);
    setDataToShow(MessageList::toShow(dataFromDisk(), before, segmented));
    if (myTableView_ != nullptr) {
        myTableView_->reloadData([&](std::size_t row) { return rowAfterRebuild(row, before); });
    }
    Resize();
}

// The selection and the keyboard belong to the message, not to its place in the list.
std::ptrdiff_t TodayViewController::rowAfterRebuild(std::size_t row,
                                                    const ExtensionMessageList& before) const {
    if (row >= countOf(before)) {
        return platform::Table::kNoRow;
    }
    return rowOf(*(*before)[row], dataToShow());
}

void TodayViewController::Resize() {
    services_.mainQueue.async([self = shared_from_this()] { self->adjustHeight(); });
}

void TodayViewController::adjustHeight() {
    const auto constraint = viewHeightContraint();
    if (myTableView_ == nullptr || !constraint) {
        return;
    }
    const double height =
        myTableView_->rowHeight() * static_cast<double>(myTableView_->numberOfRows());
    platform::AnimationContext::runGroup([&] { constraint->setConstant(height); });
}

void TodayViewController::selectedSegment(platform::SegmentedControl* /*control*/) {
    ReloadData();
    services_.backgroundQueue.async([weak = weak_from_this()] {
        if (auto self = weak.lock()) {
            self->Reload();
            // Views must end on the main thread, so the last reference must not go here.
            platform::Queue& mainQueue = self->services_.mainQueue;
            mainQueue.async([kept = std::move(self)] {});
        }
    });
}

void TodayViewController::widget_noty_update() {
    widgetPerformUpdateWithCompletionHandler([](NCUpdateResult) {});
}

std::optional<std::vector<std::string>> TodayViewController::directoryContent(
    const std::string& path) {
    return ExtensionUtilities::directoryContent(path);
}

void TodayViewController::widgetPerformUpdateWithCompletionHandler(
    CompletionHandler completionHandler) {
    services_.mainQueue.async([self = shared_from_this(),
                               completionHandler = std::move(completionHandler)] {
        // Only a missing location counts as no data; its folder may be missing.
        const bool located = ExtensionUtilities::GroupPath().has_value();
        self->setDataFromDisk(located ? self->updateData() : std::make_shared<const Messages>());
        self->ReloadData();
        completionHandler(located ? NCUpdateResultNewData : NCUpdateResultNoData);
    });
}

EdgeInsets TodayViewController::widgetMarginInsetsForProposedMarginInsets(
    EdgeInsets proposed) const {
    proposed.left = 0;
    return proposed;
}

bool TodayViewController::widgetAllowsEditing() const {
    return false;
}

void TodayViewController::widgetDidBeginEditing() {}

void TodayViewController::widgetDidEndEditing() {}

std::size_t TodayViewController::numberOfRowsInTableView(platform::Table& /*table*/) {
    return countOf(dataToShow());
}

platform::TableRowView* TodayViewController::tableView_rowViewForRow(platform::Table& table,
                                                                     std::size_t /*row*/) {
    return services_.views.makeRowView(table, shared_from_this());
}

platform::TableCellView* TodayViewController::tableView_viewForTableColumn_row(
    platform::Table& table, std::size_t row) {
    const ExtensionMessageList shown = dataToShow();
    return services_.views.makeCell(
        table, shared_from_this(), row < countOf(shown) ? (*shown)[row] : nullptr);
}

void TodayViewController::tableViewSelectionDidChange() {
    slideOutRemovedRows();  // so that the table's rows are those of the list
    const std::ptrdiff_t row = myTableView_->selectedRow();
    const ExtensionMessageList shown = dataToShow();
    if (row >= 0 && static_cast<std::size_t>(row) < countOf(shown)) {
        ExtensionUtilities::LaunchCommandForMessages(
            {(*shown)[static_cast<std::size_t>(row)]}, ExtensionUtilities::commandOpen, false);
    }
}

}  // namespace quillet
