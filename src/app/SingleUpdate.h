#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "app/PendingBlocks.h"
#include "platform/desktop/UserDefaults.h"
#include "widget/TodayViewController.h"

namespace quillet {

// One full read and rebuild of a controller without an event loop, for the commands that print or
// draw the list. Main thread only.
class SingleUpdate {
public:
    // `segment` replaces the stored "segmented"; nothing is stored.
    explicit SingleUpdate(std::optional<std::int64_t> segment);

    TodayViewController& controller() const { return *controller_; }
    std::int64_t segment() const;

    // Asks for an update as a panel does and runs it to its end, including the rebuild of the list.
    NCUpdateResult run();

private:
    platform::VolatileUserDefaults volatileDefaults_;
    PendingBlocks blocks_;
    std::shared_ptr<TodayViewController> controller_;
};

}  // namespace quillet
