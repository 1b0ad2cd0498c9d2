#include <gtest/gtest.h>

#include "platform/ui/SegmentedControl.h"
#include "tests/views/WidgetWindow.h"
#include "views/TodayHeaderView.h"

namespace quillet::test {
namespace {

TEST(TodayHeaderView, StoredSegmentBeyondTheThreeShowsInbox) {
    WidgetWindow widget;
    EXPECT_EQ(widget.header().control()->selectedSegment(), 0U) << "nothing stored";
    EXPECT_EQ(widget.header().control()->accessibleName(), QStringLiteral("Folder"));
    for (const auto& [stored, shown] :
         {std::pair<std::int64_t, std::size_t>{1, 0}, {2, 1}, {3, 2}, {4, 0}, {-1, 0}}) {
        SCOPED_TRACE(stored);
        widget.defaults.setInteger(stored, "segmented");
        const TodayHeaderView header(widget.controller);
        EXPECT_EQ(header.control()->selectedSegment(), shown);
        EXPECT_EQ(widget.defaults.integerForKey("segmented"), stored);
    }
    EXPECT_TRUE(widget.mainQueue.blocks.empty()) << "building the header told the delegate";
}

TEST(TodayHeaderView, ChoiceIsStoredBeforeTheDelegateIsTold) {
    // Notes what is stored when the delegate asks for its first rebuild.
    struct WatchingQueue final : platform::Queue {
        explicit WatchingQueue(const platform::UserDefaults& watched) : defaults(watched) {}
        void async(Block /*block*/) override {
            seen.push_back(defaults.integerForKey("segmented"));
        }
        const platform::UserDefaults& defaults;
        std::vector<std::int64_t> seen;
    };
    WidgetWindow widget;
    WatchingQueue queue(widget.defaults);
    const auto delegate = TodayViewController::make(
        {queue, widget.backgroundQueue, widget.defaults, TodayWidgetFactory::shared()});
    widget.header().setDelegate(delegate);
    const platform::SegmentedControl& control = *widget.header().control();
    for (const std::size_t segment : {0U, 0U, 2U, 1U, 0U}) {  // at first "Inbox" is not stored
        widget.click(control, control.segmentRect(segment).center());
    }
    widget.header().setDelegate(nullptr);
    widget.click(control, control.segmentRect(1).center());
    EXPECT_EQ(widget.defaults.integerForKey("segmented"), 2) << "not stored without a delegate";
    EXPECT_EQ(queue.seen, (std::vector<std::int64_t>{1, 1, 3, 2, 1}));
}

}  // namespace
}  // namespace quillet::test
