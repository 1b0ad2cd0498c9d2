#pragma once

#include <memory>
#include <string_view>

#include "model/ExtensionMessage.h"
#include "platform/base/Atomic.h"
#include "platform/ui/ImageButton.h"
#include "platform/ui/TableView.h"
#include "platform/ui/TextField.h"
#include "views/FlippedView.h"
#include "widget/TodayViewController.h"

namespace quillet {

struct Theme;

// Shows one message: sender and date, below them the subject and the buttons for reply, archive and
// trash. Built once by prepare, then filled for each row that it is used for. The view tree owns
// all parts. Main thread only; the properties message and controller are atomic.
class TodayTableViewCell final : public platform::TableCellView {
public:
    explicit TodayTableViewCell(const QRect& frame);
    // Ignores the controller on purpose; prepare takes it.
    TodayTableViewCell(const QRect& frame, const std::shared_ptr<TodayViewController>& controller);

    // Builds the parts in the look of the controller. Called once, right after creation.
    void prepare(const std::shared_ptr<TodayViewController>& controller);
    // Shows a message: only the three texts and the message change.
    void PopulateExtensionMessage(const std::shared_ptr<ExtensionMessage>& message);
    // Does nothing.
    void ReUse() {}

    static constexpr bool isFlipped() { return true; }  // y grows downwards
    std::shared_ptr<ExtensionMessage> message() const { return message_.get(); }
    void setMessage(std::shared_ptr<ExtensionMessage> message) { message_.set(std::move(message)); }
    std::shared_ptr<TodayViewController> controller() const { return controller_.get().lock(); }
    void setController(const std::shared_ptr<TodayViewController>& controller) {
        controller_.set(controller);
    }

    // The parts; null until prepare.
    platform::TextField* subjectField() const noexcept { return subjectField_; }
    platform::TextField* fromField() const noexcept { return fromField_; }
    platform::TextField* dateField() const noexcept { return dateField_; }
    platform::ImageButton* archiveButton() const noexcept { return archiveButton_; }
    platform::ImageButton* trashButton() const noexcept { return trashButton_; }
    platform::ImageButton* replyButton() const noexcept { return replyButton_; }
    FlippedView* swipingView() const noexcept { return swipingView_; }
    FlippedView* horizontalSeparator1() const noexcept { return horizontalSeparator1_; }

    QString accessibleRowName() const override;

    // The buttons' actions. Each sends its command for the message shown, if there is one.
    void reply(platform::ImageButton* sender);
    void archive(platform::ImageButton* sender);
    void trash(platform::ImageButton* sender);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    platform::TextField* makeField(const QColor& color);
    platform::ImageButton* makeButton(platform::Image image,
                                      std::string_view name,
                                      void (TodayTableViewCell::*action)(platform::ImageButton*));
    FlippedView* makeSeparator(const Theme& theme);
    void addConstraints();
    void launch(std::string_view commandName, bool background) const;

    platform::TextField* subjectField_ = nullptr;
    platform::TextField* fromField_ = nullptr;
    platform::TextField* dateField_ = nullptr;
    platform::ImageButton* archiveButton_ = nullptr;
    platform::ImageButton* trashButton_ = nullptr;
    platform::ImageButton* replyButton_ = nullptr;
    [[maybe_unused]] platform::ImageButton* readButton_ = nullptr;  // reserved
    FlippedView* swipingView_ = nullptr;                            // holds every visible part
    [[maybe_unused]] FlippedView* backView_ = nullptr;              // reserved
    [[maybe_unused]] platform::TextField* archiveField_ = nullptr;  // reserved
    [[maybe_unused]] platform::TextField* deleteField_ = nullptr;   // reserved
    FlippedView* horizontalSeparator1_ = nullptr;
    [[maybe_unused]] double deltax_ = 0;  // reserved
    platform::Atomic<std::shared_ptr<ExtensionMessage>> message_;
    platform::Atomic<std::weak_ptr<TodayViewController>> controller_;
};

}  // namespace quillet
