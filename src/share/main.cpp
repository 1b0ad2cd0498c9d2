#include <QGuiApplication>
#include <cstdlib>
#include <memory>

#include "share/ShareCommandLine.h"
#include "share/ShareProgram.h"

#include "platform/base/StandardError.h"
#include "platform/desktop/Display.h"

namespace {

// Only the clipboard needs a display.
std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool withClipboard) {
    if (!withClipboard) {
        return std::make_unique<QCoreApplication>(argc, argv);
    }
    // A Wayland desktop gives its clipboard only to windows, but to every X11 program.
    if (std::getenv("DISPLAY") != nullptr) {
        setenv("QT_QPA_PLATFORM", "xcb;wayland", 0);
    }
    return std::make_unique<QGuiApplication>(argc, argv);
}

}  // namespace

int main(int argc, char** argv) {
    const auto read = quillet::readShareCommandLine({argv, static_cast<std::size_t>(argc)});
    if (const auto* exit = std::get_if<quillet::platform::EarlyExit>(&read)) {
        return quillet::platform::finish(*exit);
    }
    const auto& line = std::get<quillet::ShareCommandLine>(read);
    const bool withClipboard = line.items.empty();
    if (withClipboard && !quillet::platform::hasDisplay()) {
        quillet::platform::writeErrorLine(
            "quillet-share: there is no display whose clipboard could be shared; name files or "
            "links, or \"-\" for standard input");
        return quillet::platform::kFailure;
    }
    const auto application = makeApplication(argc, argv, withClipboard);
    QCoreApplication::setApplicationName(QStringLiteral("quillet-share"));
    return quillet::runShare(line);
}
