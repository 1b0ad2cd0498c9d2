#include "app/TrayIcon.h"

#include <QAction>
#include <QCoreApplication>
#include <chrono>

#include "app/PanelController.h"
#include "platform/extension/Bundle.h"

namespace quillet {

namespace {

constexpr std::chrono::seconds kInterval{2};
constexpr int kAttempts = 30;

QString localized(const char* key) {
    return QString::fromStdString(platform::Bundle::main().localizedString(key));
}

}  // namespace

QIcon programIcon() {
    const auto shipped = platform::Bundle::main().pathForResource(
        "../icons/hicolor/256x256/apps/it.tarno.quillet.today.png");
    const QIcon fallback = shipped ? QIcon(QString::fromStdString(*shipped)) : QIcon();
    return QIcon::fromTheme(QStringLiteral("it.tarno.quillet.today"), fallback);
}

TrayIcon::TrayIcon(PanelController& panel) : panel_(panel) {
    timer_.callOnTimeout([this] { look(); });
    timer_.start(kInterval);
}

void TrayIcon::look() {
    if (QSystemTrayIcon::isSystemTrayAvailable()) {
        show();
    }
    if (icon_ || ++attempts_ == kAttempts) {
        timer_.stop();
    }
}

void TrayIcon::show() {
    menu_.emplace();
    icon_.emplace(programIcon());
    QAction* toggle = menu_->addAction(QString());
    QObject::connect(&*menu_, &QMenu::aboutToShow, toggle, [this, toggle] {
        toggle->setText(localized(panel_.isShown() ? "Hide" : "Show"));
    });
    QObject::connect(toggle, &QAction::triggered, toggle, [this] { panel_.toggle(); });
    QAction* quit = menu_->addAction(localized("Quit"));
    QObject::connect(quit, &QAction::triggered, quit, &QCoreApplication::quit);
    icon_->setContextMenu(&*menu_);
    icon_->setToolTip(QStringLiteral("Quillet Today"));
    QObject::connect(&*icon_, &QSystemTrayIcon::activated, &*menu_, [this](auto reason) {
        if (reason == QSystemTrayIcon::Trigger) {
            panel_.toggle();
        }
    });
    icon_->show();
}

}  // namespace quillet
