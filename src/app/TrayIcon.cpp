#include "app/TrayIcon.h"

#include <QAction>
#include <QCoreApplication>

#include "app/PanelController.h"
#include "app/ProgramIcon.h"
#include "platform/extension/Bundle.h"

namespace quillet {

namespace {

QString localized(const char* key) {
    return QString::fromStdString(platform::Bundle::main().localizedString(key));
}

}  // namespace

TrayIcon::TrayIcon(PanelController& panel) : panel_(panel), icon_(programIcon()) {
    QAction* toggle = menu_.addAction(QString());
    QObject::connect(&menu_, &QMenu::aboutToShow, toggle, [this, toggle] {
        toggle->setText(localized(panel_.isShown() ? "Hide" : "Show"));
    });
    QObject::connect(toggle, &QAction::triggered, toggle, [this] { panel_.toggle(); });
    QAction* quit = menu_.addAction(localized("Quit"));
    QObject::connect(quit, &QAction::triggered, quit, &QCoreApplication::quit);
    icon_.setContextMenu(&menu_);
    icon_.setToolTip(QStringLiteral("Quillet Today"));
    QObject::connect(&icon_, &QSystemTrayIcon::activated, &menu_, [this](auto reason) {
        if (reason == QSystemTrayIcon::Trigger) {
            panel_.toggle();
        }
    });
    icon_.show();
}

}  // namespace quillet
