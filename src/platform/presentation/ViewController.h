#pragma once

#include <memory>

class QWidget;

namespace quillet::platform {

// A controller's hold on its view tree. Its end ends the tree, unless another view has adopted the
// root. Main thread only.
class ViewTree {
public:
    virtual ~ViewTree() = default;

    // Whether the tree is still there: whoever adopts it may end it.
    virtual bool exists() const noexcept = 0;
    virtual QWidget* root() const noexcept = 0;
    virtual void hide() = 0;
};

// Base of a controller that builds and owns one view tree. Main thread only.
//
// view() builds the tree on first use: loadView(), then viewDidLoad(). Whoever shows the view
// calls viewWillAppear() before each showing.
class ViewController {
public:
    virtual ~ViewController() = default;

    // Owned by the controller, unless a parent widget has adopted it (then by that one).
    QWidget* view();
    bool isViewLoaded() const noexcept { return tree_ && tree_->exists(); }

    virtual void loadView() = 0;  // must call setView
    virtual void viewDidLoad() {}
    virtual void viewWillAppear() {}

    // Takes a controller's view, which was shown from this one, off the screen again. The view
    // stays with its owner; one that is not built yet is not built for it.
    virtual void dismissViewController(ViewController& viewController);

    // Whether the place that the view is shown in has the dark look; set before view().
    void setDarkAppearance(bool dark) noexcept { darkAppearance_ = dark; }
    bool darkAppearance() const noexcept { return darkAppearance_; }

protected:
    void setView(std::unique_ptr<ViewTree> tree) { tree_ = std::move(tree); }

private:
    std::unique_ptr<ViewTree> tree_;
    bool darkAppearance_ = false;
};

}  // namespace quillet::platform
