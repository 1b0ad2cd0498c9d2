#pragma once

#include <QMenu>
#include <QSystemTrayIcon>

namespace quillet {

class PanelController;

// The icon in the desktop's tray that shows and hides the panel. Main thread only.
class TrayIcon {
public:
    explicit TrayIcon(PanelController& panel);

private:
    PanelController& panel_;
    QMenu menu_;
    QSystemTrayIcon icon_;
};

}  // namespace quillet
