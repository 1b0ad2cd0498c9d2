#include "platform/ui/SegmentedControlAccessible.h"

#include <QPointer>
#include <algorithm>

#include "platform/ui/SegmentedControl.h"
#include "platform/ui/SingleLineText.h"

namespace quillet::platform {

namespace {

class SegmentAccessible final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    SegmentAccessible(SegmentedControl* control, std::size_t segment)
        : control_(control), segment_(segment) {}

    bool isValid() const override { return control_ && segment_ < control_->segmentCount(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override {
        return control_ ? control_->window()->windowHandle() : nullptr;
    }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(control_);
    }
    QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }
    QAccessibleInterface* childAt(int /*x*/, int /*y*/) const override { return nullptr; }
    QAccessible::Role role() const override { return QAccessible::RadioButton; }
    void setText(QAccessible::Text /*kind*/, const QString& /*text*/) override {}

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name && isValid() ? singleLineText(control_->label(segment_))
                                                      : QString();
    }

    QRect rect() const override {
        if (!isValid()) {
            return {};
        }
        const QRect place = control_->segmentRect(segment_);
        return {control_->mapToGlobal(place.topLeft()), place.size()};
    }

    QAccessible::State state() const override {
        QAccessible::State state;
        state.invalid = !isValid();
        if (isValid()) {
            const bool selected = control_->selectedSegment() == segment_;
            state.checkable = true;
            state.checked = selected;
            state.focusable = true;
            state.focused = selected && control_->hasFocus();
            state.disabled = !control_->isEnabled();
            state.invisible = !control_->isVisible();
        }
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }

    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString& name) override {
        if (name == pressAction() && isValid() && control_->isEnabled()) {
            control_->clickSegment(segment_);
        }
    }
    QStringList keyBindingsForAction(const QString& /*name*/) const override { return {}; }

private:
    QPointer<SegmentedControl> control_;
    std::size_t segment_;
};

}  // namespace

SegmentedControlAccessible::SegmentedControlAccessible(SegmentedControl* control)
    : QAccessibleWidget(control, QAccessible::Grouping), control_(control) {}

SegmentedControlAccessible::~SegmentedControlAccessible() {
    for (const QAccessible::Id id : segments_) {
        QAccessible::deleteAccessibleInterface(id);
    }
}

int SegmentedControlAccessible::childCount() const {
    return static_cast<int>(control_->segmentCount());
}

QAccessibleInterface* SegmentedControlAccessible::child(int index) const {
    if (index < 0 || index >= childCount()) {
        return nullptr;
    }
    while (segments_.size() <= static_cast<std::size_t>(index)) {
        auto* segment = new SegmentAccessible(control_, segments_.size());
        // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the toolkit's registry owns it
        segments_.push_back(QAccessible::registerAccessibleInterface(segment));
    }
    return QAccessible::accessibleInterface(segments_[static_cast<std::size_t>(index)]);
}

int SegmentedControlAccessible::indexOfChild(const QAccessibleInterface* child) const {
    for (int i = 0; i < childCount(); ++i) {
        if (this->child(i) == child) {
            return i;
        }
    }
    return -1;
}

QAccessibleInterface* SegmentedControlAccessible::focusChild() const {
    return control_->hasFocus() ? child(static_cast<int>(control_->selectedSegment())) : nullptr;
}

}  // namespace quillet::platform
