// send_once post NAME OBJECT: posts a notification.
// send_once open IDENTIFIER URL [stay]: asks the application to open the URL in the foreground.
// Ends at once, without an event loop, or with "stay" when a signal tells it to.

#include <QCoreApplication>
#include <cstdlib>
#include <vector>

#include "platform/desktop/DistributedNotificationCenter.h"
#include "platform/desktop/SessionBus.h"
#include "platform/desktop/StopSignals.h"
#include "platform/desktop/Workspace.h"

using namespace quillet::platform;

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (argv[1] == std::string("post")) {
        std::_Exit(DistributedNotificationCenter::defaultCenter().postNotification(argv[2], argv[3])
                       ? 0
                       : 1);
    }
    SessionBus::settleAddress();
    StopSignals stopSignals;
    stopSignals.connect(&QCoreApplication::quit);
    Workspace& workspace = Workspace::sharedWorkspace();
    const std::vector urls{URL::URLWithString(argv[3]).value()};
    const bool isOpened = workspace.openURLs(urls, argv[2], LaunchOptions::AllowingClassicStartup);
    if (isOpened && argc > 4) {
        QCoreApplication::exec();
    }
    std::_Exit(isOpened && workspace.flush() ? 0 : 1);
}
