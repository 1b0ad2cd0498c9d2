#include "app/PanelProgram.h"

#include <QApplication>
#include <QSystemTrayIcon>
#include <QTimer>
#include <chrono>
#include <cstdlib>

#include "app/PanelController.h"
#include "app/ProgramIcon.h"
#include "app/SingleInstance.h"
#include "app/TrayIcon.h"
#include "platform/desktop/Queues.h"
#include "platform/desktop/StopSignals.h"
#include "platform/desktop/Workspace.h"

namespace quillet {

namespace {

// A panel that starts with the session may be there before the tray is.
constexpr std::chrono::seconds kTrayInterval{2};
constexpr int kTrayAttempts = 30;
constexpr std::chrono::milliseconds kPatience{500};
// How long a host may take to start when the program is told to end: the session waits with it.
constexpr std::chrono::seconds kPatienceWithHost{30};

// Lets hosts that still start have their requests; those that do not get them are logged. After the
// user has quit nobody sees the wait, so it is as long as a start may take, and a signal ends it.
void handOverRequests(std::optional<platform::StopSignals>& stopSignals, bool isTold) {
    platform::Workspace& workspace = platform::Workspace::sharedWorkspace();
    if (isTold) {
        workspace.flush(kPatienceWithHost);
        return;
    }
    stopSignals.reset();
    workspace.flush();
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
    const SingleInstance::Role role = instance.claim();
    if (role == SingleInstance::Role::Later) {
        return 0;
    }
    QApplication::setWindowIcon(programIcon());
    platform::Workspace::sharedWorkspace();
    std::optional<platform::StopSignals> stopSignals(std::in_place);
    bool isTold = false;
    stopSignals->connect([&isTold] {
        isTold = true;
        QCoreApplication::quit();
    });
    panel.emplace(look);
    std::optional<TrayIcon> tray;
    QTimer trayTimer;
    const auto lookForTray = [&, attempts = 0]() mutable {
        if (QSystemTrayIcon::isSystemTrayAvailable()) {
            tray.emplace(*panel);
        }
        if (tray || ++attempts == kTrayAttempts) {
            trayTimer.stop();
        }
    };
    QObject::connect(&trayTimer, &QTimer::timeout, &trayTimer, lookForTray);
    trayTimer.start(kTrayInterval);
    panel->panel().setDismissed([&] {
        panel->hide();
        // A hidden panel that nothing could bring back would only linger.
        if (!tray && role != SingleInstance::Role::First) {
            QCoreApplication::quit();
        }
    });
    panel->show();
    const int status = QApplication::exec();
    panel->hide();
    tray.reset();
    SingleInstance::release();  // a start from now on does not wait for what is still to be done
    handOverRequests(stopSignals, isTold);
    // Blocks still under way hold the widget, whose views must end before the application does.
    if (!platform::drainBackgroundQueue(kPatience)) {
        std::_Exit(status);  // the host holds its lock; whoever quits does not wait for it
    }
    panel.reset();
    QCoreApplication::sendPostedEvents();
    return status;
}

}  // namespace quillet
