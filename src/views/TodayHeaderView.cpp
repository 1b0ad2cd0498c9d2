#include "views/TodayHeaderView.h"

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/extension/Bundle.h"
#include "platform/ui/ConstraintLayout.h"
#include "platform/ui/SegmentedControl.h"
#include "widget/MessageList.h"

namespace quillet {

namespace {

constexpr std::array<std::string_view, 3> kLabels = {"Inbox", "To Do", "Memo"};

std::size_t segmentOfPreference(std::int64_t stored) {
    // Unsigned, so that 0 and negative values lie beyond the last segment too.
    const std::uint64_t segment = static_cast<std::uint64_t>(stored) - 1;
    return segment < kLabels.size() ? segment : 0;
}

}  // namespace

TodayHeaderView::TodayHeaderView(const std::shared_ptr<TodayViewController>& controller,
                                 QWidget* parent)
    : FlippedView(parent),
      control_(new platform::SegmentedControl(this)),
      defaults_(controller->defaults()),
      controller_(controller) {
    control_->setSegmentCount(kLabels.size());
    for (std::size_t segment = 0; segment < kLabels.size(); ++segment) {
        control_->setLabel(platform::Bundle::main().localizedString(kLabels.at(segment)), segment);
    }
    control_->setAccessibleName(
        QString::fromStdString(platform::Bundle::main().localizedString("Folder")));
    control_->setDark(controller->legacyDarkBackground());
    control_->setAction([this] { selectedSegment(control_); });
    control_->setSelectedSegment(
        segmentOfPreference(defaults_.integerForKey(MessageList::kSegmentedPreference)));

    auto* layout = new platform::ConstraintLayout(this);
    layout->addConstraints("H:|-(40)-[control(>=1)]-(20)-|", {{"control", control_}});
    layout->addConstraints("V:|-(1)-[control(20)]", {{"control", control_}});
}

void TodayHeaderView::selectedSegment(platform::SegmentedControl* /*sender*/) {
    select();
}

void TodayHeaderView::select() {
    // Stored first, because the delegate rebuilds the list from the preference.
    defaults_.setInteger(static_cast<std::int64_t>(control_->selectedSegment()) + 1,
                         MessageList::kSegmentedPreference);
    if (const auto delegate = delegate_.lock()) {
        delegate->selectedSegment(control_);
    }
}

}  // namespace quillet
