// The main function of test programs that need the toolkit: without a display, in English, with
// the interface font that the design was made for.

#include <QApplication>
#include <QFont>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    qputenv("LC_ALL", "en_GB.UTF-8");
    qputenv("TZ", "UTC");
    ::testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    QApplication::setFont(QFont(QStringLiteral("Inter")));
    return RUN_ALL_TESTS();
}
