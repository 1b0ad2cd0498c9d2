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
// and asks it for updates when the panel appears, every ten minutes while it is shown, and whenever
// the store changes on disk. Main thread only.
class PanelController {
public:
    // `look` overrides the desktop's setting.
    explicit PanelController(std::optional<platform::Look> look);
    ~PanelController();

    void show();
    void hide();
    void toggle();
    bool isShown() const;
    Panel& panel() { return panel_; }
    // The current controller, which a change of the look replaces.
    TodayViewController& widget() { return *widget_; }

private:
    platform::Look look() const;
    void appearanceChanged();
    std::shared_ptr<TodayViewController> makeWidget() const;
    void install(std::shared_ptr<TodayViewController> widget);
    void appear();
    void present();
    // Runs the block on the main queue unless this object has ended by then.
    void onMainQueue(std::function<void()> block) const;
    void requestUpdate();
    void watchStore();

    std::optional<platform::Look> override_;
    platform::Appearance appearance_;
    Panel panel_;
    std::shared_ptr<TodayViewController> widget_;
    // What is about to be shown: the widget, or its successor in another look.
    std::shared_ptr<TodayViewController> appearing_;
    std::unique_ptr<platform::FolderWatcher> storeWatcher_;
    std::unique_ptr<platform::FolderWatcher> accountsWatcher_;
    QTimer updateTimer_;
    bool isUpdateRequested_ = false;
    // Ends with this object; blocks that wait on a queue hold it weakly.
    std::shared_ptr<const bool> life_ = std::make_shared<const bool>(true);
};

}  // namespace quillet
