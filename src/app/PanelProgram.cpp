#include "app/PanelProgram.h"

#include <QApplication>
#include <QSystemTrayIcon>

#include "app/PanelController.h"
#include "app/ProgramIcon.h"
#include "app/SingleInstance.h"
#include "app/TrayIcon.h"
#include "platform/desktop/Queues.h"

namespace quillet {

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
    panel.emplace(look);
    std::optional<TrayIcon> tray;
    if (QSystemTrayIcon::isSystemTrayAvailable()) {
        tray.emplace(*panel);
    }
    // A hidden panel that nothing could bring back would only linger.
    const bool reachable = tray || role == SingleInstance::Role::First;
    panel->panel().setDismissed([&panel, reachable] {
        panel->hide();
        if (!reachable) {
            QCoreApplication::quit();
        }
    });
    panel->show();
    const int status = QApplication::exec();
    // Blocks still under way hold the widget, whose views must end before the application does.
    platform::drainBackgroundQueue();
    panel.reset();
    QCoreApplication::sendPostedEvents();
    return status;
}

}  // namespace quillet
