// quillet-startup-probe START
//
// quillet-today up to its first painted frame, then one line: milliseconds since START (the
// monotonic clock, in seconds, as whoever started the process read it) and the process's peak
// memory in KiB.

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>
#include <cstdio>
#include <cstdlib>

#include "app/TodayProgram.h"
#include "bench/PeakMemory.h"
#include "bench/Timing.h"

namespace {

double start = 0;  // seconds

// Ends the program after the first paint event of a window.
class FirstFrame : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && watched->isWidgetType() && !seen_) {
            seen_ = true;
            // Runs once the whole window has been painted and handed over.
            QTimer::singleShot(0, this, [] {
                std::printf("%.1f %ld\n",
                            quillet::bench::milliseconds(CLOCK_MONOTONIC) - start * 1e3,
                            quillet::bench::peakMemory());
                QCoreApplication::quit();
            });
        }
        return false;
    }

private:
    bool seen_ = false;
};

// The toolkit calls this once the program has made its application object.
void watchForFirstFrame() {
    qApp->installEventFilter(new FirstFrame(qApp));
}
Q_COREAPP_STARTUP_FUNCTION(watchForFirstFrame)

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("Usage: quillet-startup-probe START\n", stderr);
        return 2;
    }
    start = std::strtod(argv[1], nullptr);
    argv[1] = nullptr;
    return quillet::runToday(1, argv);
}
