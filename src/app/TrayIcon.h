#pragma once

#include <QIcon>
#include <QMenu>
#include <QSystemTrayIcon>
#include <QTimer>
#include <optional>

namespace quillet {

class PanelController;

// The program's icon from the desktop's icon theme, else the one shipped with the program.
QIcon programIcon();

// The icon in the desktop's tray that shows and hides the panel. It comes as soon as there is a
// tray: a panel that starts with the session may start before that. Main thread only.
class TrayIcon {
public:
    explicit TrayIcon(PanelController& panel);

    bool isThere() const { return icon_.has_value(); }

private:
    void look();
    void show();

    PanelController& panel_;
    QTimer timer_;
    int attempts_ = 0;
    std::optional<QMenu> menu_;
    std::optional<QSystemTrayIcon> icon_;
};

}  // namespace quillet
