#include "mailhost/host/MailHostProgram.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QTimer>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <thread>
#include <utility>

#include "mailhost/host/HostConfiguration.h"
#include "mailhost/host/HostService.h"
#include "mailhost/host/MailHost.h"

#include "model/ContainerPaths.h"
#include "model/HostInterface.h"
#include "platform/base/StandardError.h"
#include "platform/desktop/ApplicationService.h"
#include "platform/desktop/DistributedNotificationCenter.h"
#include "platform/desktop/SessionBus.h"
#include "platform/desktop/StopSignals.h"
#include "platform/files/FileLock.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet::mailhost {

namespace {

using platform::ApplicationService;
using platform::FileLock;
using platform::StopSignals;
using platform::Path::appendingPathComponent;

// The host ends in less than a second, whatever it is at.
constexpr std::chrono::milliseconds kEndLimit{900};
constexpr std::chrono::milliseconds kOncePause{25};

int fail(const std::string& problem) {
    platform::writeErrorLine("quillet-mail-host: " + problem);
    return platform::kFailure;
}

int failWithAll(const std::vector<std::string>& problems) {
    for (const std::string& problem : problems) {
        fail(problem);
    }
    return platform::kFailure;
}

int detect(const UserFolders& folders) {
    const Discovery discovery = discover(folders);
    failWithAll(discovery.problems);
    if (discovery.configuration.accounts.empty()) {
        return fail("no account is found; write one into " + folders.config +
                    "/quillet/mail-host.conf");
    }
    const std::string text = configurationText(discovery.configuration, folders);
    const bool isPrinted = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    return isPrinted ? platform::kSuccess : fail("the configuration cannot be printed");
}

bool shallEnd() {
    return StopSignals::received() != 0;
}

// Where a host keeps its state, and the data folder that it writes.
struct Places {
    std::string stateFolder;
    std::string dataFolder;
};

// What a host has to itself: its state, and the container that it writes.
struct Parts {
    FileLock lock;
    Journal journal;
    ContainerWriter writer;
};

platform::Result<Parts> openParts(const std::string& stateFolder, const std::string& dataFolder) {
    if (auto error = platform::FileManager::createFolder(stateFolder)) {
        return *std::move(error);
    }
    auto lock =
        FileLock::tryNow(appendingPathComponent(stateFolder, "lock"), FileLock::Access::Exclusive);
    if (!lock) {
        return lock.error();
    }
    auto journal = Journal::open(appendingPathComponent(stateFolder, "journal"));
    if (!journal) {
        return journal.error();
    }
    const std::string list =
        appendingPathComponent(stateFolder, FileLock::nameFor(dataFolder, ".written"));
    return Parts{
        std::move(lock.value()), std::move(journal.value()), ContainerWriter(dataFolder, list)};
}

// Publishes once. Readers of the container and changes of the folders are waited for.
int publishOnce(MailHost& host, CommandLog log) {
    constexpr int kListings = 3;
    host.refresh();
    for (int listing = 1; listing < kListings && host.isUnsettled(); ++listing) {
        std::this_thread::sleep_for(kOncePause);
        host.refresh();
    }
    auto changes = host.publish();
    while (!changes && changes.error().code == EWOULDBLOCK && !shallEnd()) {
        std::this_thread::sleep_for(kOncePause);
        changes = host.publish();
    }
    if (!changes) {
        return fail("the container cannot be written: " + changes.error().description());
    }
    log.writeChanges(changes.value());
    if (!changes.value().files.empty()) {
        platform::DistributedNotificationCenter::defaultCenter().postNotification(
            kStoreNotificationName, kStoreNotificationObject);
    }
    return platform::kSuccess;
}

platform::ApplicationCall callOf(const CommandLine& line) {
    platform::ApplicationCall call;
    call.name = "run";
    call.urls = line.urls;
    return call;
}

// What to do when a host is running already.
int handOver(const CommandLine& line) {
    const std::string running = "another program is " + line.identifier + " already";
    if (line.urls.empty()) {
        return fail(running);
    }
    const ApplicationService application(platform::SessionBus::shared(), line.identifier, {});
    return application.handOver(callOf(line)) ? platform::kSuccess
                                              : fail(running + ", and does not answer");
}

int failWithoutParts(const platform::Error& error, const CommandLine& line) {
    return error.code == EWOULDBLOCK ? handOver(line) : fail(error.description());
}

void endWithBus(QDBusConnection bus, QTimer& end) {
    end.setSingleShot(true);
    QObject::connect(&end, &QTimer::timeout, &QCoreApplication::quit);
    bus.connect(QString(),
                QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"),
                QStringLiteral("Disconnected"),
                &end,
                SLOT(start()));
}

// A start that writes the container once has the parts for a moment.
platform::Result<Parts> awaitParts(const std::string& stateFolder, const std::string& dataFolder) {
    constexpr int kTries = 80;
    for (int tries = 1; tries < kTries; ++tries) {
        auto parts = openParts(stateFolder, dataFolder);
        if (parts || parts.error().code != EWOULDBLOCK) {
            return parts;
        }
        std::this_thread::sleep_for(kOncePause);
    }
    return openParts(stateFolder, dataFolder);
}

// Runs until the end. Whoever waits for the host by its name on the bus is called back by the event
// loop, after the first reading.
int serve(const CommandLine& line,
          const Places& places,
          HostConfiguration& configuration,
          const Configuration& first) {
    StopSignals signals(kEndLimit);
    auto& bus = platform::SessionBus::shared();
    if (!bus.connection().isConnected()) {
        return fail("there is no session bus on which the panel could ask for anything");
    }
    HostService* service = nullptr;
    ApplicationService application(
        bus, line.identifier, [&service](const platform::ApplicationCall& call) {
            service->receive(call);
        });
    // The name first: of two hosts that start at once, the one that ends never has it.
    const auto claim = application.claim();
    if (claim == ApplicationService::Claim::Later) {
        return handOver(line);
    }
    if (claim == ApplicationService::Claim::Refused) {
        return fail("the session bus does not give the name " + line.identifier + ": " +
                    application.lastError());
    }
    auto parts = awaitParts(places.stateFolder, places.dataFolder);
    if (!parts) {
        return failWithoutParts(parts.error(), line);
    }
    MailHost host(parts.value().journal, parts.value().writer, shallEnd);
    HostService theService(
        host, parts.value().journal, configuration, CommandLog(line.logs ? &std::cout : nullptr));
    service = &theService;
    QTimer end;
    endWithBus(bus.connection(), end);
    signals.connect(&QCoreApplication::quit);
    host.configure(first);
    host.recover();
    theService.start();
    if (!line.urls.empty()) {
        theService.receive(callOf(line));
    }
    return QCoreApplication::exec();
}

int writeOnce(const CommandLine& line, const Places& places, const Configuration& configuration) {
    const StopSignals signals(kEndLimit);
    auto parts = openParts(places.stateFolder, places.dataFolder);
    if (!parts) {
        return failWithoutParts(parts.error(), line);
    }
    MailHost host(parts.value().journal, parts.value().writer, shallEnd);
    host.configure(configuration);
    host.recover();
    return publishOnce(host, CommandLog(line.logs ? &std::cout : nullptr));
}

// The state of each identifier has a folder of its own.
std::string stateFolder(const UserFolders& folders, const std::string& identifier) {
    return folders.state + "/quillet/mail-host/" + FileLock::nameFor(identifier, "");
}

}  // namespace

int runMailHost(const CommandLine& line, int argc, char** argv) {
    const UserFolders folders = UserFolders::ofEnvironment();
    if (line.task == CommandLine::Task::Detect) {
        return detect(folders);
    }
    const auto dataFolder = ExtensionUtilities::GroupDataPath();
    if (!dataFolder) {
        return fail("there is no container; name one with --container");
    }
    HostConfiguration configuration(line.configuration, folders);
    const auto read = configuration.read();
    if (const auto* const problems = std::get_if<std::vector<std::string>>(&read)) {
        return failWithAll(*problems);
    }
    std::signal(SIGPIPE, SIG_IGN);  // whoever reads the log may leave
    const QCoreApplication application(argc, argv);
    const Places places{stateFolder(folders, line.identifier), *dataFolder};
    const auto& first = std::get<Configuration>(read);
    return line.task == CommandLine::Task::Once ? writeOnce(line, places, first)
                                                : serve(line, places, configuration, first);
}

}  // namespace quillet::mailhost
