#pragma once

#include <QAccessibleWidget>
#include <vector>

namespace quillet::platform {

class SegmentedControl;

// A segmented control as a screen reader sees it: a group of radio buttons.
class SegmentedControlAccessible final : public QAccessibleWidget {
public:
    explicit SegmentedControlAccessible(SegmentedControl* control);
    ~SegmentedControlAccessible() override;

    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* focusChild() const override;

private:
    SegmentedControl* control_;
    mutable std::vector<QAccessible::Id> segments_;  // made on first request
};

}  // namespace quillet::platform
