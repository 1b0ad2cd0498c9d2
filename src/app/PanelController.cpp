#include "app/PanelController.h"

#include <chrono>
#include <utility>

#include "model/ContainerPaths.h"
#include "platform/desktop/Queues.h"
#include "platform/desktop/UserDefaults.h"
#include "platform/files/Path.h"
#include "platform/presentation/AnimationContext.h"
#include "views/TodayWidgetFactory.h"
#include "views/UserPlace.h"

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
    install(makeWidget());
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

std::shared_ptr<TodayViewController> PanelController::makeWidget() const {
    auto widget = TodayViewController::make({platform::mainQueue(),
                                             platform::backgroundQueue(),
                                             platform::UserDefaults::standard(),
                                             TodayWidgetFactory::shared()});
    widget->setDarkAppearance(look() == Look::Dark);
    widget->view();
    return widget;
}

void PanelController::install(std::shared_ptr<TodayViewController> widget) {
    const std::optional<UserPlace> place =
        widget_ ? std::optional<UserPlace>(*widget_) : std::nullopt;
    panel_.takeContents();
    widget_ = std::move(widget);
    panel_.setContents(widget_->view(),
                       widget_->widgetMarginInsetsForProposedMarginInsets(kProposedMargins),
                       widget_->darkAppearance() ? Look::Dark : Look::Light);
    if (place) {
        place->restore(*widget_);
    }
}

// The look is fixed when a view tree is built, so another look needs another tree.
void PanelController::appearanceChanged() {
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
// queue later. The panel comes up after them, so that it never shows half a list.
void PanelController::appear() {
    const bool sameLook = widget_->darkAppearance() == (look() == Look::Dark);
    appearing_ = sameLook ? widget_ : makeWidget();
    platform::AnimationContext::setEnabled(false);
    // A read may wait for the host while the event loop goes on. As a block of the main queue it
    // never runs inside the wait of another block.
    onMainQueue([this, expected = appearing_] {
        if (appearing_ != expected) {  // hidden again or replaced meanwhile
            return;
        }
        expected->viewWillAppear();
        onMainQueue([this, expected] {
            onMainQueue([this, expected] {
                if (appearing_ == expected) {
                    present();
                }
            });
        });
    });
}

void PanelController::onMainQueue(std::function<void()> block) const {
    platform::mainQueue().async([life = std::weak_ptr(life_), block = std::move(block)] {
        if (life.lock()) {
            block();
        }
    });
}

void PanelController::present() {
    auto widget = std::exchange(appearing_, nullptr);
    if (widget != widget_) {
        install(std::move(widget));
    }
    if (!isShown()) {
        panel_.present();
    }
    platform::AnimationContext::setEnabled(!appearance_.reducedMotion());
    updateTimer_.start();
    requestUpdate();
}

void PanelController::hide() {
    appearing_ = nullptr;
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

// A request that has not begun serves all that come before it begins.
void PanelController::requestUpdate() {
    if (isUpdateRequested_) {
        return;
    }
    isUpdateRequested_ = true;
    onMainQueue([this] { isUpdateRequested_ = false; });  // runs right before the update
    widget_->widgetPerformUpdateWithCompletionHandler([](NCUpdateResult) {});
}

void PanelController::watchStore() {
    const std::optional<std::string> dataFolder = ExtensionUtilities::GroupDataPath();
    if (!dataFolder) {
        return;
    }
    const auto changed = [this] { requestUpdate(); };
    const std::string today =
        platform::Path::appendingPathComponent(*dataFolder, ExtensionUtilities::kTodayFolder);
    storeWatcher_ = std::make_unique<platform::FolderWatcher>(std::vector{today}, 1, changed);
    accountsWatcher_ =
        std::make_unique<platform::FolderWatcher>(std::vector{*dataFolder}, 0, changed);
}

}  // namespace quillet
