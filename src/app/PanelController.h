#pragma once

#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

#include "app/Panel.h"
#include "platform/desktop/Appearance.h"
#include "platform/desktop/FolderWatcher.h"
#include "widget/TodayViewController.h"

namespace quillet {

// Plays the notification centre's role: makes the widget's controller, shows its view in the panel
// and asks it for updates when the panel appears, every ten minutes while it is shown and whenever
// the store changes on disk. Main thread only.
class PanelController {
public:
    // `look` overrides the desktop's own setting.
    explicit PanelController(std::optional<platform::Look> look);
    ~PanelController();
    PanelController(const PanelController&) = delete;
    PanelController& operator=(const PanelController&) = delete;

    void show();
    void hide();
    void toggle();
    bool isShown() const;
    Panel& panel() { return panel_; }
    // The controller of this moment; a change of the look makes a new one.
    TodayViewController& widget() { return *widget_; }

private:
    platform::Look look() const;
    void appearanceChanged();
    void makeWidget();
    void appear();
    void present();
    void requestUpdate();
    void watchStore();

    std::optional<platform::Look> override_;
    platform::Appearance appearance_;
    platform::Look shownLook_ = platform::Look::Light;
    Panel panel_;
    std::shared_ptr<TodayViewController> widget_;
    std::unique_ptr<platform::FolderWatcher> storeWatcher_;
    std::unique_ptr<platform::FolderWatcher> accountsWatcher_;
    QTimer updateTimer_;
    bool appearing_ = false;
};

}  // namespace quillet
