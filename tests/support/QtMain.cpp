// The main function of test programs that need the toolkit: without a display, in English, with the
// interface font of the design, and unable to reach the user's own programs.

#include <QApplication>
#include <QFont>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    qputenv("LC_ALL", "en_GB.UTF-8");
    qputenv("TZ", "UTC");
    for (const char* folders : {"XDG_DATA_HOME", "XDG_DATA_DIRS"}) {
        qputenv(folders, "/nonexistent");  // has no desktop entry of an application
    }
#ifndef QUILLET_TEST_HAS_BUS
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
#endif
    ::testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    QApplication::setFont(QFont(QStringLiteral("Inter")));
    return RUN_ALL_TESTS();
}
