#include <QPointer>
#include <QWidget>
#include <gmock/gmock.h>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/ui/ViewController.h"

namespace quillet::test {
namespace {

class Controller : public platform::ViewController {
public:
    explicit Controller(bool makesView = true) : makesView_(makesView) {}
    void loadView() override {
        steps.emplace_back(darkAppearance() ? "load dark" : "load light");
        if (makesView_) {
            setView(std::make_unique<QWidget>());
        }
    }
    void viewDidLoad() override { steps.emplace_back(isViewLoaded() ? "did load" : "too early"); }

    std::vector<std::string> steps;

private:
    bool makesView_;
};

TEST(ViewController, BuildsItsViewOnceOnFirstUse) {
    Controller controller;
    EXPECT_FALSE(controller.isViewLoaded());
    controller.setDarkAppearance(true);
    QWidget* view = controller.view();
    EXPECT_NE(view, nullptr);
    EXPECT_EQ(controller.view(), view);
    EXPECT_THAT(controller.steps, testing::ElementsAre("load dark", "did load"));
    Controller forgetful(false);
    EXPECT_THROW(forgetful.view(), std::logic_error);
}

TEST(ViewController, OwnsItsViewUntilAnotherWidgetAdoptsIt) {
    auto controller = std::make_unique<Controller>();
    QPointer<QWidget> view = controller->view();
    controller.reset();
    EXPECT_TRUE(view.isNull());

    QWidget panel;
    controller = std::make_unique<Controller>();
    view = controller->view();
    view->setParent(&panel);
    controller.reset();
    EXPECT_FALSE(view.isNull());

    controller = std::make_unique<Controller>();
    auto shortLived = std::make_unique<QWidget>();
    controller->view()->setParent(shortLived.get());
    shortLived.reset();
    EXPECT_FALSE(controller->isViewLoaded());
}

}  // namespace
}  // namespace quillet::test
