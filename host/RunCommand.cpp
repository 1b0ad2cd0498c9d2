#include "host/RunCommand.h"

#include <QApplication>
#include <QDBusConnection>
#include <QTimer>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "host/MessageWindow.h"
#include "host/SampleHost.h"
#include "host/WindowActivation.h"
#include "model/ContainerPaths.h"
#include "platform/base/StandardError.h"
#include "platform/desktop/ApplicationService.h"
#include "platform/desktop/Display.h"
#include "platform/desktop/Queues.h"
#include "platform/desktop/SessionBus.h"
#include "platform/desktop/StopSignals.h"

namespace quillet::host {

namespace {

using platform::ApplicationService;
using Claim = ApplicationService::Claim;

// How long the end waits for commands that were received: a reader may hold the store's lock.
constexpr std::chrono::seconds kPatience{2};

int fail(const std::string& problem) {
    platform::writeErrorLine("quillet-sample-host: " + problem);
    return kFailure;
}

std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool hasDisplay) {
    if (!hasDisplay) {
        return std::make_unique<QCoreApplication>(argc, argv);
    }
    QGuiApplication::setDesktopFileName(QStringLiteral("it.tarno.quillet"));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    return std::make_unique<QApplication>(argc, argv);
}

int handOver(const ApplicationService& service, const Call& call, const std::string& identifier) {
    if (!service.handOver(call)) {
        return fail(identifier + " is running already and does not answer");
    }
    platform::writeErrorLine("quillet-sample-host: " + identifier +
                             " is running already; it was asked to come to the front instead");
    return kSuccess;
}

// Runs the event loop until the bus ends or a signal comes, then deals with what is left.
int waitForEnd(QDBusConnection bus, platform::StopSignals& signals, SampleHost& host) {
    QTimer patience;
    QObject::connect(&patience, &QTimer::timeout, &patience, &QCoreApplication::quit);
    const auto stop = [&] {
        host.whenIdle(&QCoreApplication::quit);
        patience.start(kPatience);
    };
    signals.connect(stop);
    QTimer end;
    end.setSingleShot(true);
    QObject::connect(&end, &QTimer::timeout, &end, stop);
    bus.connect(QString(),
                QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"),
                QStringLiteral("Disconnected"),
                &end,
                SLOT(start()));
    return QCoreApplication::exec();
}

}  // namespace

int runHost(const CommandLine& line, int argc, char** argv) {
    const auto dataFolder = ExtensionUtilities::GroupDataPath();
    if (!dataFolder) {
        return fail("there is no container; name one with --container");
    }
    const Call given{"run", line.urls, takeActivationOfEnvironment(), false, {}};
    platform::StopSignals signals;
    std::signal(SIGPIPE, SIG_IGN);  // whoever reads the log may leave
    const bool hasDisplay = platform::hasDisplay();
    const auto application = makeApplication(argc, argv, hasDisplay);
    auto& sessionBus = platform::SessionBus::shared();
    const QDBusConnection bus = sessionBus.connection();
    if (!bus.isConnected()) {
        return fail("there is no session bus on which the widget could ask for anything");
    }
    const auto window = hasDisplay ? std::make_unique<MessageWindow>() : nullptr;
    SampleHost host(*dataFolder, window.get(), std::cout);
    ApplicationService service(
        sessionBus, line.identifier, [&host](const Call& call) { host.receive(call); });
    const Claim claim = service.claim();
    if (claim == Claim::Refused) {
        return fail("the session bus does not give the name " + line.identifier + ": " +
                    service.lastError());
    }
    if (claim == Claim::Later) {
        return handOver(service, given, line.identifier);
    }
    if (!given.urls.empty()) {
        host.receive(given);
    }
    const int status = waitForEnd(bus, signals, host);
    if (!platform::drainBackgroundQueue(std::chrono::milliseconds(0))) {
        std::_Exit(status);  // somebody holds the lock; the message stays in the store
    }
    return status;
}

}  // namespace quillet::host
