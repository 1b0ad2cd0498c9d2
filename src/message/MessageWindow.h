#pragma once

#include <QWidget>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "message/ParsedMessage.h"
#include "message/ShownForm.h"

#include "platform/base/Error.h"

class QLabel;
class QVBoxLayout;

namespace quillet::message {

// What the window asks of others.
struct WindowActions {
    // Asks for the path to save a file at, which may exist if the user agrees; empty: none.
    std::function<QString(QWidget& parent, const QString& name)> choosePath;
    std::function<std::optional<platform::Error>(const std::string& path, std::string_view content)>
        save;
    std::function<std::optional<platform::Error>(const std::string& url)> open;
};

// The toolkit's dialog.
QString choosePathToSave(QWidget& parent, const QString& name);

// One message or one draft. Escape closes it, Ctrl+R answers. Main thread only.
class MessageWindow final : public QWidget {
public:
    enum class Kind { Message, Draft };

    MessageWindow(ParsedMessage message, Kind kind, ShownForm form, WindowActions actions);

private:
    void addBody(QVBoxLayout& lines, ShownForm form);
    void addButtons(QVBoxLayout& lines, Kind kind);
    void reply();
    void open(const std::string& url);
    void save(const Attachment& attachment);
    void tell(const QString& text);

    const ParsedMessage message_;
    const WindowActions actions_;
    QLabel* status_;  // owned by this: the link under the pointer, or how the last action ended
};

}  // namespace quillet::message
