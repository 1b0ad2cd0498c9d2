#pragma once

#include <QTextBrowser>
#include <QUrl>

#include "message/ParsedMessage.h"
#include "message/ShownForm.h"

namespace quillet::message {

// The body of a stranger's message. It shows the pictures that came with the message and loads
// nothing else, neither from the disk nor from the net. A click on a link only tells of it
// (anchorClicked, highlighted). Main thread only.
class MessageBody final : public QTextBrowser {
public:
    // `message` has to outlive it.
    MessageBody(const ParsedMessage& message, ShownForm form);

    // Whether the body goes on behind what is shown of it.
    bool isCut() const noexcept { return isCut_; }
    QVariant loadResource(int type, const QUrl& name) override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void showHtml();
    void showText(ShownForm form);

    const ParsedMessage& message_;
    bool isCut_;
};

}  // namespace quillet::message
