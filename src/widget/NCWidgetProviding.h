#pragma once

#include <cstdint>
#include <functional>

namespace quillet {

// What an update request answers.
enum NCUpdateResult : std::uint8_t {
    NCUpdateResultNewData = 0,
    NCUpdateResultNoData = 1,
    NCUpdateResultFailed = 2,
};

// Distances from the edges of a panel, in points.
struct EdgeInsets {
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;

    friend bool operator==(const EdgeInsets&, const EdgeInsets&) = default;
};

// What the notification centre asks of a widget. Main thread.
class NCWidgetProviding {
public:
    using CompletionHandler = std::function<void(NCUpdateResult)>;

    virtual ~NCWidgetProviding() = default;
    // Calls the handler exactly once, later, on the main queue.
    virtual void widgetPerformUpdateWithCompletionHandler(CompletionHandler completionHandler) = 0;
    virtual EdgeInsets widgetMarginInsetsForProposedMarginInsets(EdgeInsets proposed) const = 0;
    virtual bool widgetAllowsEditing() const = 0;
    virtual void widgetDidBeginEditing() = 0;
    virtual void widgetDidEndEditing() = 0;
};

}  // namespace quillet
