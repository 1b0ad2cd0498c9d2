// open_url IDENTIFIER URL [stay]: asks the application to open the URL in the foreground. Ends at
// once, without an event loop, or with "stay" when a signal tells it to.

#include <QCoreApplication>
#include <cstdlib>
#include <vector>

#include "platform/desktop/SessionBus.h"
#include "platform/desktop/StopSignals.h"
#include "platform/desktop/Workspace.h"

using namespace quillet::platform;

int main(int argc, char** argv) {
    SessionBus::settleAddress();
    const QCoreApplication application(argc, argv);
    StopSignals stopSignals;
    stopSignals.connect(&QCoreApplication::quit);
    Workspace& workspace = Workspace::sharedWorkspace();
    const std::vector urls{URL::URLWithString(argv[2]).value()};
    const bool isOpened = workspace.openURLs(urls, argv[1], LaunchOptions::AllowingClassicStartup);
    if (isOpened && argc > 3) {
        QCoreApplication::exec();
    }
    std::_Exit(isOpened && workspace.flush() ? 0 : 1);
}
