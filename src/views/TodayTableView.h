#pragma once

#include <QPointF>
#include <cstdint>

#include "platform/ui/TableView.h"

namespace quillet {

// The message table: one transparent column without header, grid or focus ring. Main thread only.
class TodayTableView final : public platform::TableView {
public:
    explicit TodayTableView(QWidget* parent = nullptr);

    // Reserved for a drag gesture; nothing changes them.
    QPointF startDrag() const noexcept { return startDrag_; }
    std::int64_t swipeOnRowIndex() const noexcept { return swipeOnRowIndex_; }

private:
    QPointF startDrag_;
    std::int64_t swipeOnRowIndex_ = -1;  // no row
};

}  // namespace quillet
