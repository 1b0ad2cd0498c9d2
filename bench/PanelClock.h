#pragma once

#include <QObject>
#include <functional>
#include <string>

#include "app/PanelController.h"

namespace quillet::bench {

// Seconds since 1970, as all processes see them.
double now();

// Runs the event loop until the condition holds. Throws std::runtime_error after 30 seconds.
void waitFor(const std::function<bool()>& condition);

// Notes when the panel's window has been painted with the expected message on top of its list. Main
// thread only.
class PaintClock : public QObject {
public:
    explicit PaintClock(PanelController& panel);

    void expect(std::string messageId);
    double time() const { return time_; }  // 0: not yet

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    PanelController& panel_;
    std::string messageId_;
    double time_ = 0;
};

// Clicks a button of the panel's first row, once the row stands still: clicks on a row that nobody
// can have seen yet do nothing. Returns the time just before the click. Throws std::runtime_error
// if the row keeps moving.
enum class RowButton { Reply, Archive };
double clickFirstRow(PanelController& panel, RowButton button);

}  // namespace quillet::bench
