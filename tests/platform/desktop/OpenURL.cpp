// Has the application IDENTIFIER open URL in the foreground and ends at once, without an event
// loop.

#include <QCoreApplication>
#include <cstdlib>
#include <vector>

#include "platform/desktop/Workspace.h"

int main(int argc, char** argv) {
    using namespace quillet::platform;
    const QCoreApplication application(argc, argv);
    Workspace& workspace = Workspace::sharedWorkspace();
    const bool isOpened =
        argc == 3 && workspace.openURLs(std::vector{URL::URLWithString(argv[2]).value()},
                                        argv[1],
                                        LaunchOptions::AllowingClassicStartup);
    std::_Exit(isOpened && workspace.flush() ? 0 : 1);
}
