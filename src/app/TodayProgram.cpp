#include "app/TodayProgram.h"

#include <QApplication>
#include <QFont>
#include <QFontInfo>
#include <QLocale>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "app/CommandLine.h"
#include "app/ContainerCheck.h"
#include "app/ListCommand.h"
#include "app/PanelProgram.h"
#include "app/SnapshotCommand.h"
#include "model/ContainerPaths.h"
#include "platform/base/Error.h"
#include "platform/base/StandardError.h"
#include "platform/desktop/Display.h"
#include "platform/desktop/SessionBus.h"
#include "platform/files/FileManager.h"
#include "platform/files/LockWait.h"

namespace quillet {

namespace {

using platform::kFailure;
using platform::kSuccess;

void complain(const std::string& problem) {
    platform::writeErrorLine("quillet-today: " + problem);
}

void putInEnvironment(const char* name, const std::optional<std::string>& value) {
    if (value) {
        setenv(name, value->c_str(), 1);
    }
}

// Before any thread runs: the platform services read their settings from the environment.
void applySettings(const CommandLine& line) {
    putInEnvironment("QUILLET_CONTAINER", line.container);
    putInEnvironment("QUILLET_BUNDLE_IDENTIFIER", line.bundleIdentifier);
    platform::SessionBus::settleAddress();
}

// Complains about what is wrong with the container. Returns whether it can be read.
bool checkContainer() {
    const auto problem = containerProblem();
    if (problem && problem->code == ENOENT) {
        complain("there is no folder \"" + ExtensionUtilities::GroupPath().value() +
                 "\" yet; nothing to show until the mail application writes it");
        return true;
    }
    if (problem) {
        complain("the container cannot be read: " + problem->text);
    }
    return !problem;
}

// Sets what a desktop would set: the direction of the user's language and, without a desktop, the
// interface font that the design was made for.
void prepareInterface() {
    QGuiApplication::setLayoutDirection(QLocale::system().textDirection());
    const QFont designFont(QStringLiteral("Inter"));
    if (QGuiApplication::platformName() == QLatin1String("offscreen") &&
        QFontInfo(designFont).family() == designFont.family()) {
        QApplication::setFont(designFont);
    }
}

int runList(const CommandLine& line) {
    const auto format = line.json ? ListFormat::Json : ListFormat::Text;
    const std::string rows = listRows(format, line.segment);
    if (std::fwrite(rows.data(), 1, rows.size(), stdout) != rows.size() ||
        std::fflush(stdout) != 0) {
        complain(platform::posixError(errno, "the list cannot be printed").text);
        return kFailure;
    }
    return kSuccess;
}

// Without a session the toolkit would make a runtime folder of its own and warn. It uses the folder
// in which the program keeps its locks instead.
void settleRuntimeFolder() {
    const auto folder = platform::FileManager::runtimeFolder();
    if (folder) {
        setenv("XDG_RUNTIME_DIR", folder.value().c_str(), 1);
    }
}

int runSnapshot(const CommandLine& line, int argc, char** argv) {
    settleRuntimeFolder();
    // --scale alone decides how large the picture is.
    for (const char* variable : {"QT_SCREEN_SCALE_FACTORS",
                                 "QT_FONT_DPI",
                                 "QT_USE_PHYSICAL_DPI",
                                 "QT_SCALE_FACTOR_ROUNDING_POLICY"}) {
        unsetenv(variable);
    }
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("QT_SCALE_FACTOR", std::to_string(line.scale).c_str(), 1);
    const QApplication application(argc, argv);
    prepareInterface();
    const auto error =
        drawSnapshot({line.picture, line.segment, line.look.value_or(platform::Look::Light)});
    if (error) {
        complain(*error);
    }
    return error ? kFailure : kSuccess;
}

int runPanelWith(const CommandLine& line, int argc, char** argv) {
    if (!platform::hasDisplay()) {
        complain(
            "there is no display for the panel; start it in a desktop session, or use "
            "\"quillet-today list\" or \"quillet-today snapshot FILE.png\"");
        return kFailure;
    }
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("quillet-today"));
    QGuiApplication::setDesktopFileName(QStringLiteral("it.tarno.quillet.today"));
    prepareInterface();
    return runPanel(line.look);
}

}  // namespace

int runToday(int argc, char** argv) {
    const auto read = readCommandLine({argv, static_cast<std::size_t>(argc)});
    if (const auto* exit = std::get_if<platform::EarlyExit>(&read)) {
        return platform::finish(*exit);
    }
    const auto& line = std::get<CommandLine>(read);
    applySettings(line);
    const bool isReadable = checkContainer();
    if (line.command == CommandLine::Command::Panel) {
        return runPanelWith(line, argc, argv);
    }
    if (!isReadable) {
        return kFailure;
    }
    platform::tellOfLongLockWaits("quillet-today");
    return line.command == CommandLine::Command::List ? runList(line)
                                                      : runSnapshot(line, argc, argv);
}

}  // namespace quillet
