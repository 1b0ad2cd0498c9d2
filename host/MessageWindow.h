#pragma once

#include <QScrollArea>
#include <string>

#include "host/HostCommand.h"

class QFormLayout;

namespace quillet::host {

// The sample host's one window: the headers of the message that was opened last, those of an answer
// to it, or a draft that came. Texts are plain text, but for a draft's body. What is longer than
// the screen scrolls. Main thread only.
class MessageWindow final : public QScrollArea {
public:
    MessageWindow();

    // Shows what came of a command that shows a message, without taking the focus.
    void present(const HostCommand& command, const Outcome& outcome);
    // Shows the window as it is, without taking the focus.
    void present();

private:
    void addLine(const QString& name, const std::string& text);
    void addList(const QString& name, const QString& text);
    void addHeaders(const ExtensionMessage& message);
    void addHeadersOfReply(const ExtensionMessage& message);
    void addDraft(const Draft& draft);
    void addNote(const QString& text);
    void clear();

    QFormLayout* lines_;  // owned by what scrolls
};

}  // namespace quillet::host
