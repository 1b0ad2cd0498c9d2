#include "app/PanelProgram.h"

#include <QApplication>
#include <QEvent>
#include <QEventLoop>
#include <QSocketNotifier>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "app/PanelController.h"
#include "app/SingleInstance.h"
#include "app/TrayIcon.h"
#include "platform/base/ProgramArguments.h"
#include "platform/base/StandardError.h"
#include "platform/desktop/Queues.h"
#include "platform/desktop/StopSignals.h"
#include "platform/desktop/Workspace.h"
#include "platform/files/LockWait.h"

namespace quillet {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

// The program ends within a second, whatever it is busy with.
constexpr milliseconds kLongestEnd{900};
// The part of that time for hosts that still start and for running blocks.
constexpr milliseconds kEndPatience{500};
constexpr milliseconds kUsualWrite{100};

// Ends the program when the toolkit is told to quit. The toolkit itself would ask the windows
// first, and a panel that hides instead of closing would keep it from quitting.
class QuitFilter final : public QObject {
public:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        const bool isQuit = event->type() == QEvent::Quit;
        if (isQuit) {
            platform::StopSignals::request();
        }
        return isQuit;
    }
};

// Gives the windows their icon after the first frame, which need not wait for it.
class IconFilter final : public QObject {
public:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            platform::mainQueue().async([] { QApplication::setWindowIcon(programIcon()); });
        }
        return false;
    }
};

void stop() {
    platform::endLockWaits();
    QCoreApplication::exit(0);  // unlike quit() it does not ask the windows
}

void runLoop(const platform::LockWait& wait) {
    QEventLoop loop;
    const QSocketNotifier over(wait.descriptor(), QSocketNotifier::Read);
    QObject::connect(&over, &QSocketNotifier::activated, &loop, &QEventLoop::quit);
    loop.exec();  // returns at once if the application has been told to exit
}

// From now on the event loop runs while the main thread waits for a lock for longer than a host
// usually writes, so that windows, signals and the session bus are answered. Blocks of the main
// queue wait meanwhile. The wait ends when the application is told to exit.
void answerDuringLockWaits() {
    platform::setLockWaiter(
        [mainThread = std::this_thread::get_id()](const platform::LockWait& wait) {
            if (std::this_thread::get_id() != mainThread) {
                wait.block();
            } else if (!wait.block(kUsualWrite)) {
                runLoop(wait);
            }
        });
}

// Returns false if blocks still run: they hold the widget, whose views must end before the
// application. Requests whose host has not started by then are logged.
bool finishWork() {
    const auto end = Clock::now() + kEndPatience;
    platform::Workspace::sharedWorkspace().flush(kEndPatience);
    const auto left = std::chrono::duration_cast<milliseconds>(end - Clock::now());
    return platform::drainBackgroundQueue(std::max(left, milliseconds{0}));
}

int runAlone(std::optional<platform::Look> look,
             SingleInstance& instance,
             std::optional<PanelController>& panel) {
    platform::Workspace::sharedWorkspace();
    platform::StopSignals stopSignals(kLongestEnd);
    stopSignals.connect(stop);
    QuitFilter filter;
    QCoreApplication::instance()->installEventFilter(&filter);
    answerDuringLockWaits();
    panel.emplace(look);
    IconFilter iconFilter;
    panel->panel().installEventFilter(&iconFilter);
    std::optional<TrayIcon> tray(std::in_place, *panel);
    panel->panel().setDismissed([&] {
        panel->hide();
        // Nothing could show the hidden panel again.
        if (!tray->isThere() && !instance.isReachable()) {
            QCoreApplication::quit();
        }
    });
    panel->show();
    const int status = QApplication::exec();
    panel->hide();
    panel->panel().setDismissed({});
    tray.reset();
    instance.release();  // another start need not wait for the rest
    if (!finishWork()) {
        std::_Exit(status);
    }
    panel.reset();
    QCoreApplication::sendPostedEvents();
    return status;
}

}  // namespace

int runPanel(std::optional<platform::Look> look) {
    QApplication::setQuitOnLastWindowClosed(false);
    std::optional<PanelController> panel;
    SingleInstance instance([&panel] {
        if (panel) {
            panel->toggle();
        }
    });
    switch (instance.claim()) {
        case SingleInstance::Claim::Alone:
            return runAlone(look, instance, panel);
        case SingleInstance::Claim::Told:
            return 0;
        case SingleInstance::Claim::Unreachable:
            break;
    }
    platform::writeErrorLine(
        "quillet-today: the panel is running already, and no session bus leads to it that could "
        "show it");
    return platform::kFailure;
}

}  // namespace quillet
