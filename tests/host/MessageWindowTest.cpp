#include <QAccessible>
#include <QScreen>
#include <QScrollBar>
#include <QTextBrowser>
#include <gtest/gtest.h>
#include <memory>

#include "host/MessageWindow.h"

namespace quillet::host {
namespace {

void present(MessageWindow& window, const Draft& draft) {
    HostCommand command;
    command.draft = platform::URL::URLWithString("quillet://compose?");
    Outcome outcome;
    outcome.draft = std::make_shared<const Draft>(draft);
    window.present(command, outcome);
}

TEST(MessageWindow, EveryDraftIsShownFromItsBeginningOnWithinTheScreen) {
    Draft empty;
    Draft many;
    many.body = "<p>Text</p>";
    many.subject = "Many files";
    many.attachments.resize(2'000, {"/d/שם.txt", DraftAttachment::State::Taken, 1, {}});
    MessageWindow window;
    const QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&window);
    EXPECT_EQ(accessible->role(), QAccessible::Window);
    for (const Draft& draft : {many, many, empty}) {
        SCOPED_TRACE(draft.subject);
        present(window, draft);
        EXPECT_GT(window.height(), window.findChild<QTextBrowser*>()->height());
        EXPECT_LT(window.height(), window.screen()->availableGeometry().height());
        EXPECT_EQ(window.verticalScrollBar()->value(), 0);
        EXPECT_EQ(accessible->text(QAccessible::Name), window.windowTitle());
        window.verticalScrollBar()->setValue(window.verticalScrollBar()->maximum());
    }
}

}  // namespace
}  // namespace quillet::host
