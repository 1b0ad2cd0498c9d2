// Posts one distributed notification, NAME OBJECT, and ends at once, without an event loop.

#include <QCoreApplication>
#include <cstdlib>

#include "platform/desktop/DistributedNotificationCenter.h"

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const bool isPosted =
        argc == 3 &&
        quillet::platform::DistributedNotificationCenter::defaultCenter().postNotification(argv[1],
                                                                                           argv[2]);
    std::_Exit(isPosted ? 0 : 1);
}
