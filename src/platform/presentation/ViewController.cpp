#include "platform/presentation/ViewController.h"

#include <QPointer>
#include <QWidget>
#include <stdexcept>

namespace quillet::platform {

struct ViewController::State {
    QPointer<QWidget> view;

    void deleteUnlessAdopted() const {
        if (view && view->parentWidget() == nullptr) {
            delete view.data();
        }
    }
};

ViewController::ViewController() : state_(std::make_unique<State>()) {}

ViewController::~ViewController() {
    state_->deleteUnlessAdopted();
}

QWidget* ViewController::view() {
    if (!state_->view) {
        loadView();
        if (!state_->view) {
            throw std::logic_error("loadView did not set a view");
        }
        viewDidLoad();
    }
    return state_->view;
}

bool ViewController::isViewLoaded() const noexcept {
    return !state_->view.isNull();
}

void ViewController::dismissViewController(ViewController& viewController) {
    if (viewController.isViewLoaded()) {
        viewController.view()->hide();
    }
}

void ViewController::setView(std::unique_ptr<QWidget> view) {
    state_->deleteUnlessAdopted();
    state_->view = view.release();
}

}  // namespace quillet::platform
