#include "bench/PanelClock.h"

#include <QApplication>
#include <QEvent>
#include <QTest>
#include <QTimer>
#include <QWindow>
#include <chrono>
#include <stdexcept>
#include <utility>

#include "views/TodayTableView.h"
#include "views/TodayTableViewCell.h"

namespace quillet::bench {

namespace {

constexpr int kLimit = 30'000;  // milliseconds

}  // namespace

double now() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

void waitFor(const std::function<bool()>& condition) {
    QTimer limit;  // wakes the loop
    limit.setSingleShot(true);
    limit.start(kLimit);
    while (!condition()) {
        if (!limit.isActive()) {
            throw std::runtime_error("nothing came in time");
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

PaintClock::PaintClock(PanelController& panel) : panel_(panel) {
    qApp->installEventFilter(this);
}

void PaintClock::expect(std::string messageId) {
    messageId_ = std::move(messageId);
    time_ = 0;
}

bool PaintClock::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Paint && watched->isWidgetType() && time_ == 0) {
        const auto messages = panel_.widget().dataToShow();
        if (messages && !messages->empty() && messages->front()->messageId() == messageId_) {
            // Runs once the whole window has been painted and handed over.
            QTimer::singleShot(0, this, [this] { time_ = time_ == 0 ? now() : time_; });
        }
    }
    return false;
}

double clickFirstRow(PanelController& panel, RowButton button) {
    const auto& table = static_cast<TodayTableView&>(*panel.widget().myTableView());
    if (!QTest::qWaitFor([&table] { return table.standsStill(0); }, kLimit)) {
        throw std::runtime_error("the row does not stand still");
    }
    const auto* const cell = static_cast<TodayTableViewCell*>(table.cellAtRow(0));
    const QWidget* const target =
        button == RowButton::Reply ? cell->replyButton() : cell->archiveButton();
    const double start = now();
    QTest::mouseClick(panel.panel().windowHandle(),
                      Qt::LeftButton,
                      {},
                      target->mapTo(&panel.panel(), target->rect().center()));
    return start;
}

}  // namespace quillet::bench
