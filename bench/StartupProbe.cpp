// quillet-startup-probe START
//
// The panel program up to its first painted frame, then one line: milliseconds since START (the
// monotonic clock, in seconds, as whoever started the process read it) and the process's peak
// memory in KiB. Reads the container of the environment, as the program does.

#include <QApplication>
#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <cstdio>
#include <cstdlib>

#include "app/PanelProgram.h"
#include "bench/PeakMemory.h"
#include "bench/Timing.h"

namespace {

// Ends the program behind the first paint event of a window.
class FirstFrame : public QObject {
public:
    explicit FirstFrame(double start) : start_(start) {}

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && watched->isWidgetType() && !seen_) {
            seen_ = true;
            // Runs once the whole window has been painted and handed over.
            QTimer::singleShot(0, this, [this] {
                std::printf("%.1f %ld\n",
                            quillet::bench::milliseconds(CLOCK_MONOTONIC) - start_ * 1e3,
                            quillet::bench::peakMemory());
                QCoreApplication::quit();
            });
        }
        return false;
    }

private:
    double start_;
    bool seen_ = false;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("Usage: quillet-startup-probe START\n", stderr);
        return 2;
    }
    const QApplication application(argc, argv);
    FirstFrame firstFrame(std::strtod(argv[1], nullptr));
    qApp->installEventFilter(&firstFrame);
    return quillet::runPanel(quillet::platform::Look::Light);
}
