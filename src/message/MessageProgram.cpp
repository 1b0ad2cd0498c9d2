#include "message/MessageProgram.h"

#include <QApplication>
#include <QIcon>
#include <QLocale>
#include <memory>
#include <utility>

#include "message/Confinement.h"
#include "message/MessageFile.h"
#include "message/MessageWindow.h"
#include "message/Requests.h"
#include "message/Supervision.h"
#include "message/WindowActivation.h"

#include "platform/base/StandardError.h"
#include "platform/desktop/Display.h"
#include "platform/files/FileManager.h"

namespace quillet::message {

namespace {

using platform::FileDescriptor;

// To read one takes a while even if nothing is wrong with it.
constexpr std::size_t kLargeFile = std::size_t{16} << 20U;  // bytes

int fail(const std::string& reason) {
    platform::writeErrorLine("quillet-message: " + reason);
    return platform::kFailure;
}

ParsedMessage messageIn(std::string_view bytes, ShownForm form) {
    return form == ShownForm::Source ? sourceOf(bytes) : parseMessage(bytes);
}

WindowActions actionsOf(const std::shared_ptr<Requests>& requests) {
    return {choosePathToSave,
            [requests](const std::string& path, std::string_view content) {
                return requests->save(path, content);
            },
            [requests](const std::string& url) { return requests->open(url); }};
}

// In the process of the window.
int showWindow(const CommandLine& line,
               std::string_view bytes,
               ShownForm form,
               FileDescriptor socket,
               std::pair<int&, char**> arguments) {
    const platform::Activation activation = takeActivationOfEnvironment();
    // For a picture "a" the toolkit would look for a file "a@2x" beside it.
    qputenv("QT_HIGHDPI_DISABLE_2X_IMAGE_LOADING", "1");
    confineProcess();
    const QApplication application(arguments.first, arguments.second);
    QApplication::setApplicationName(QStringLiteral("quillet-message"));
    QGuiApplication::setDesktopFileName(QStringLiteral("it.tarno.quillet.message"));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("it.tarno.quillet.today")));
    QApplication::setLayoutDirection(QLocale().textDirection());
    const TurnLimit limit;
    TurnLimit::grant(bytes.size() > kLargeFile ? 2 : 1);
    ParsedMessage message = messageIn(bytes, form);
    TurnLimit::grant(1);
    MessageWindow window(std::move(message),
                         line.isDraft ? MessageWindow::Kind::Draft : MessageWindow::Kind::Message,
                         form,
                         actionsOf(std::make_shared<Requests>(std::move(socket))));
    window.show();
    bringToFront(window, activation);
    return QApplication::exec();
}

}  // namespace

int runMessage(const CommandLine& line, int argc, char** argv) {
    platform::ByteBuffer bytes;
    if (const auto error = platform::FileManager::readFile(line.file, bytes, kLongestFile)) {
        return fail(error->description());
    }
    if (!platform::hasDisplay()) {
        return fail("there is no display");
    }
    const auto status = runSupervised([&](ShownForm form, FileDescriptor socket) {
        return showWindow(line, bytes.view(), form, std::move(socket), {argc, argv});
    });
    return status ? *status : fail(line.file + ": the message cannot be shown");
}

}  // namespace quillet::message
