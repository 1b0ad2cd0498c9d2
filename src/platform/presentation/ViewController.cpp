#include "platform/presentation/ViewController.h"

#include <stdexcept>

namespace quillet::platform {

QWidget* ViewController::view() {
    if (!isViewLoaded()) {
        loadView();
        if (!isViewLoaded()) {
            throw std::logic_error("loadView did not set a view");
        }
        viewDidLoad();
    }
    return tree_->root();
}

void ViewController::dismissViewController(ViewController& viewController) {
    if (viewController.isViewLoaded()) {
        viewController.tree_->hide();
    }
}

}  // namespace quillet::platform
