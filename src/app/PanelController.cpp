#include "app/PanelController.h"

#include <chrono>

#include "model/ExtensionUtilities.h"
#include "platform/desktop/Queues.h"
#include "platform/desktop/UserDefaults.h"
#include "platform/foundation/Path.h"
#include "platform/ui/AnimationContext.h"

namespace quillet {

using platform::Look;

namespace {

constexpr std::chrono::minutes kUpdateInterval{10};
constexpr EdgeInsets kProposedMargins{10, 10, 10, 0};  // points

}  // namespace

PanelController::PanelController(std::optional<Look> look)
    : override_(look), appearance_([this] { appearanceChanged(); }) {
    panel_.setDismissed([this] { hide(); });
    updateTimer_.setInterval(kUpdateInterval);
    QObject::connect(&updateTimer_, &QTimer::timeout, &updateTimer_, [this] { requestUpdate(); });
    makeWidget();
    watchStore();
}

PanelController::~PanelController() {
    panel_.takeContents();
}

Look PanelController::look() const {
    return override_.value_or(appearance_.look());
}

bool PanelController::isShown() const {
    return panel_.isVisible();
}

void PanelController::makeWidget() {
    panel_.takeContents();
    widget_ = TodayViewController::make(
        {platform::mainQueue(), platform::backgroundQueue(), platform::UserDefaults::standard()});
    shownLook_ = look();
    widget_->setDarkAppearance(shownLook_ == Look::Dark);
    QWidget* view = widget_->view();
    panel_.setContents(
        view, widget_->widgetMarginInsetsForProposedMarginInsets(kProposedMargins), shownLook_);
}

// The look is fixed when a view tree is built, so another look takes another tree.
void PanelController::appearanceChanged() {
    if (look() == shownLook_) {
        if (isShown()) {
            platform::AnimationContext::setEnabled(!appearance_.reducedMotion());
        }
        return;
    }
    makeWidget();
    if (isShown() || appearing_) {
        appear();
    }
}

void PanelController::show() {
    if (!isShown() && !appearing_) {
        appear();
    }
}

// The widget's first read schedules its list, and the list its height, each one turn of the main
// queue later; the panel comes up behind them, so that it never shows half a list.
void PanelController::appear() {
    appearing_ = true;
    platform::AnimationContext::setEnabled(false);
    widget_->viewWillAppear();
    platform::mainQueue().async([this] { platform::mainQueue().async([this] { present(); }); });
}

void PanelController::present() {
    if (!appearing_) {
        return;  // hidden again meanwhile
    }
    appearing_ = false;
    panel_.present();
    platform::AnimationContext::setEnabled(!appearance_.reducedMotion());
    updateTimer_.start();
    requestUpdate();
}

void PanelController::hide() {
    appearing_ = false;
    updateTimer_.stop();
    panel_.hide();
}

void PanelController::toggle() {
    if (isShown() || appearing_) {
        hide();
    } else {
        show();
    }
}

void PanelController::requestUpdate() {
    widget_->widgetPerformUpdateWithCompletionHandler([](NCUpdateResult) {});
}

void PanelController::watchStore() {
    const std::optional<std::string> dataFolder = ExtensionUtilities::GroupDataPath();
    if (!dataFolder) {
        return;
    }
    const auto changed = [this] { requestUpdate(); };
    const std::string today = platform::Path::appendingPathComponent(*dataFolder, "Today");
    storeWatcher_ = std::make_unique<platform::FolderWatcher>(today, 1, changed);
    accountsWatcher_ = std::make_unique<platform::FolderWatcher>(*dataFolder, 0, changed);
}

}  // namespace quillet
