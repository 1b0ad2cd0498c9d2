#pragma once

#include <QPointer>
#include <QWidget>
#include <memory>

#include "platform/presentation/ViewController.h"

namespace quillet::platform {

// A view tree of widgets. Main thread only.
class WidgetTree final : public ViewTree {
public:
    explicit WidgetTree(std::unique_ptr<QWidget> root) : root_(root.release()) {}
    ~WidgetTree() override {
        if (root_ && root_->parentWidget() == nullptr) {
            delete root_.data();
        }
    }
    WidgetTree(const WidgetTree&) = delete;
    WidgetTree& operator=(const WidgetTree&) = delete;

    bool exists() const noexcept override { return !root_.isNull(); }
    QWidget* root() const noexcept override { return root_; }
    void hide() override { root_->hide(); }

private:
    QPointer<QWidget> root_;
};

}  // namespace quillet::platform
