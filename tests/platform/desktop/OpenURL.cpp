// open_url IDENTIFIER URL [STAY]: asks the application to open the URL in the foreground. Ends at
// once, without an event loop, or with a third argument when a signal tells it to.

#include <QCoreApplication>
#include <cstdlib>
#include <vector>

#include "platform/desktop/SessionBus.h"
#include "platform/desktop/StopSignals.h"
#include "platform/desktop/Workspace.h"

int main(int argc, char** argv) {
    using namespace quillet::platform;
    SessionBus::settleAddress();
    const QCoreApplication application(argc, argv);
    StopSignals stopSignals;
    stopSignals.connect(&QCoreApplication::quit);
    Workspace& workspace = Workspace::sharedWorkspace();
    const bool isOpened =
        argc >= 3 && workspace.openURLs(std::vector{URL::URLWithString(argv[2]).value()},
                                        argv[1],
                                        LaunchOptions::AllowingClassicStartup);
    if (isOpened && argc > 3) {
        QCoreApplication::exec();
    }
    std::_Exit(isOpened && workspace.flush() ? 0 : 1);
}
