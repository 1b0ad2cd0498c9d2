#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <filesystem>
#include <gmock/gmock.h>
#include <unistd.h>

#include "platform/desktop/SessionBus.h"
#include "platform/desktop/Workspace.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RecordingApplication.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

using platform::LaunchOptions;
using platform::URL;
using testing::MatchesRegex;

constexpr auto kForeground = LaunchOptions::AllowingClassicStartup;
constexpr auto kBackground = LaunchOptions::WithoutActivation;
const std::string kName = "it.tarno.quillet";
const std::string kText = "quillet://open?mail=a%40b&messageid=1[2]";
// The records of a desktop entry's program: tokens, whether there is a bus, URLs.
const std::string kTokens = "(quillet[^ ]+_TIME[1-9][0-9]* ){2}";
const std::string kBackgroundRecord = "none none bus " + kText + "\n";

struct Entry {
    const char* identifier;
    const char* keys;
    bool isOpened;
};
constexpr Entry kEntries[] = {
    {"it.tarno.Plain", "Exec=record %U", true},
    {"it.tarno.Closed", "Exec=record", false},
    {"it.tarno.OfTheBus", "Exec=record %u\nDBusActivatable=true", true},
    {"it.tarno.Untried", "Exec=record %U\nTryExec=/no/such", false},
    {"it.tarno.Broken", "Exec=/no/such record %U", false},
    {"../outside", "Exec=record %U", false},
};

// Installed desktop entries, whose program writes down what it is started with.
struct EntryFolder {
    EntryFolder() {
        const std::string script =
            folder.writeFile("record.sh",
                             "echo \"${DESKTOP_STARTUP_ID-none} ${XDG_ACTIVATION_TOKEN-none} \""
                             "\"${DBUS_SESSION_BUS_ADDRESS+bus }$*\" >> " +
                                 record);
        for (const auto& [identifier, keys, isOpened] : kEntries) {
            std::string text = std::string("[Desktop Entry]\nType=Application\nName=Host\n") + keys;
            text.replace(text.find("record"), 6, "/bin/sh " + script);
            folder.writeFile("applications/" + std::string(identifier) + ".desktop", text);
        }
    }

    TemporaryFolder folder;
    EnvironmentVariable home{"XDG_DATA_HOME", folder.path()};
    std::string record = folder.path("record");
};

class WorkspaceTest : public testing::Test {
protected:
    bool open(std::string_view identifier, LaunchOptions options = kForeground) {
        const std::vector urls{URL::URLWithString(kText).value()};
        return workspace_.openURLs(urls, identifier, options);
    }
    // Waits for the record of a desktop entry's program; "" if none comes.
    std::string takeRecord() const {
        std::string record;
        waitUntil([&] { return !(record = contentsOf(entries_.record)).empty(); });
        std::filesystem::remove(entries_.record);
        return record;
    }
    static const EntryFolder& sharedEntries() {
        static const EntryFolder entries;  // GIO looks up the folders of desktop entries only once
        return entries;
    }

    const EntryFolder& entries_ = sharedEntries();
    platform::SessionBus bus_;
    platform::Workspace workspace_{bus_};
};

TEST_F(WorkspaceTest, ARequestCarriesATokenOfItsInputOrSaysThatItStaysInTheBackground) {
    const std::string name = kName + ".beta-8";
    const RecordingApplication host(name);
    QPushButton button;
    QObject::connect(&button, &QPushButton::pressed, &button, [&] { EXPECT_TRUE(open(name)); });
    button.show();
    QTest::mousePress(button.windowHandle(), Qt::LeftButton);
    const QString time = QStringLiteral("_TIME%1").arg(QTest::lastMouseTimestamp);
    EXPECT_TRUE(open(name) && open(name, kBackground) && host.gets(3));
    std::vector<QVariantMap> data;
    for (const auto& request : host.requests()) {
        EXPECT_EQ(request.urls, std::vector{kText});
        data.push_back(request.platformData);
    }
    const QVariant token = data.at(0)["activation-token"];
    EXPECT_TRUE(token.toString().endsWith(time));
    EXPECT_EQ(data[0], (QVariantMap{{"activation-token", token}, {"desktop-startup-id", token}}));
    EXPECT_FALSE(data[1]["activation-token"].toString().endsWith(time));  // made without input
    EXPECT_EQ(data[2], (QVariantMap{{"x-quillet-background", true}}));
}

TEST_F(WorkspaceTest, WhatNoApplicationIsCalledIsFalseAndTheBusIsKept) {
    const RecordingApplication host(kName);
    std::vector<std::string> names{"", "quillet", ".it.tarno", "it.1tarno", ":1.0", "../outside"};
    names.insert(names.end(), {"it.tarno.\xff", "it.tarno.absent", "it." + std::string(300, 'a')});
    names.emplace_back("it.tarno\0quillet", 16);
    for (const std::string& identifier : names) {
        EXPECT_FALSE(workspace_.knowsApplication(identifier)) << identifier;
        EXPECT_FALSE(open(identifier)) << identifier;
    }
    EXPECT_FALSE(workspace_.openURLs({}, kName, kForeground));
    EXPECT_TRUE(workspace_.knowsApplication(kName));
    EXPECT_TRUE(open(kName));
    EXPECT_TRUE(host.gets(1));
}

TEST_F(WorkspaceTest, DesktopEntriesAreRunWhereTheirProgramIsThere) {
    const EnvironmentVariable stale("DESKTOP_STARTUP_ID", "stale");
    for (const auto& [identifier, keys, isOpened] : kEntries) {
        SCOPED_TRACE(identifier);
        EXPECT_EQ(workspace_.knowsApplication(identifier), isOpened);
        ASSERT_EQ(open(identifier, kBackground), isOpened);
        ASSERT_TRUE(!isOpened || takeRecord() == kBackgroundRecord);
        ASSERT_EQ(open(identifier, kForeground), isOpened);
        EXPECT_THAT(isOpened ? takeRecord() : "",
                    MatchesRegex(isOpened ? kTokens + "bus quillet:[^ ]+\n" : ""));
    }
}

TEST_F(WorkspaceTest, NoBusIsStartedWhereTheSessionHasNone) {
    const TemporaryFolder folder;
    const std::string starter = folder.writeFile("dbus-launch", "#!/bin/sh\ntouch $0.started\n");
    std::filesystem::permissions(starter, std::filesystem::perms::owner_all);
    const EnvironmentVariable path("PATH", folder.path() + ":/usr/bin:/bin");
    const EnvironmentVariable display("DISPLAY", ":9");
    const EnvironmentVariable runtimeFolder("XDG_RUNTIME_DIR", std::nullopt);
    const EnvironmentVariable address("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
    EXPECT_EQ(QProcess::execute(OPEN_URL, {"it.tarno.Plain", kText.c_str()}), 0);
    EXPECT_THAT(takeRecord(), MatchesRegex(kTokens + "quillet:[^ ]+\n"));
    EXPECT_FALSE(std::filesystem::exists(starter + ".started"));
}

// A bus that starts programs which never take their name.
class WorkspaceStartTest : public WorkspaceTest {
protected:
    void startBus(const std::vector<std::string>& slowHosts) {
        for (const std::string& identifier : slowHosts) {
            daemon_.addService(identifier,
                               "/bin/sh -c 'touch " + started_ + "; exec tail -f --pid=" +
                                   std::to_string(::getpid()) + " /dev/null'");
        }
        ASSERT_TRUE(daemon_.start());
    }
    bool takeStart() const {
        return waitUntil([this] { return std::filesystem::remove(started_); });
    }

    TemporaryFolder folder_;
    std::string started_ = folder_.path("started");
    PrivateBus daemon_;
    EnvironmentVariable address_{"DBUS_SESSION_BUS_ADDRESS", daemon_.address()};
};

TEST_F(WorkspaceStartTest, AProgramEndsOnceTheApplicationThatStartsHasItsRequest) {
    startBus({kName, kName + "2"});
    for (const auto& [name, stay] : {std::pair{kName, QStringList()}, {kName + "2", {"stay"}}}) {
        SCOPED_TRACE(name);
        QProcess sender;
        sender.start(OPEN_URL, QStringList{name.c_str(), kText.c_str()} + stay);
        ASSERT_TRUE(takeStart());
        sender.terminate();
        EXPECT_EQ(sender.state(), QProcess::Running);
        const RecordingApplication host(name);
        EXPECT_TRUE(sender.waitForFinished());
        EXPECT_TRUE(sender.exitStatus() == QProcess::NormalExit && sender.exitCode() == 0);
        EXPECT_TRUE(host.gets(1));
    }
}

TEST_F(WorkspaceStartTest, OnlyARequestThatNobodyTakesGoesToTheDesktopEntry) {
    daemon_.addService("it.tarno.Plain", "/bin/false");
    daemon_.setStartTime("50");
    startBus({"it.tarno.OfTheBus"});
    for (const char* identifier : {"it.tarno.Plain", "it.tarno.OfTheBus"}) {
        EXPECT_TRUE(open(identifier, kBackground));
        EXPECT_EQ(takeRecord(), kBackgroundRecord);
    }
    RecordingApplication host("it.tarno.Plain");
    host.failWith("it.tarno.Error.Failed");
    EXPECT_TRUE(open("it.tarno.Plain"));
    EXPECT_TRUE(host.gets(1));
    host.failWith("org.freedesktop.DBus.Error.UnknownMethod");
    // A wrong record of the failed request would come first.
    for (const std::size_t asked : {2, 3}) {
        EXPECT_TRUE(open("it.tarno.Plain", kBackground));
        EXPECT_EQ(takeRecord(), kBackgroundRecord);
        EXPECT_EQ(host.requests().size(), asked);
    }
}

TEST_F(WorkspaceStartTest, ARequestOutlivesItsBusUntilAnApplicationHasIt) {
    startBus({kName});
    EXPECT_TRUE(open(kName));
    ASSERT_TRUE(takeStart());
    const LogCapture log;
    EXPECT_FALSE(workspace_.flush(std::chrono::milliseconds(50)));
    EXPECT_EQ(log.lines(), std::vector{"Workspace no application took a request " + kName});
    daemon_.stop();
    for (const std::size_t waiting : {1, 0}) {
        SCOPED_TRACE(waiting);
        ASSERT_TRUE(daemon_.start());
        const RecordingApplication host(kName);
        EXPECT_TRUE(open(kName, kBackground));
        EXPECT_TRUE(host.gets(waiting + 1));
        EXPECT_TRUE(host.requests().back().platformData.contains("x-quillet-background"));
        EXPECT_TRUE(open(kName));
        EXPECT_TRUE(workspace_.flush());  // the host has this one, but does not answer
        daemon_.stop();
    }
}

TEST_F(WorkspaceStartTest, ABusThatIsSlowToAnswerStillPassesRequestsOn) {
    startBus({});
    const RecordingApplication host(kName);
    EXPECT_TRUE(open(kName));  // the workspace is connected
    daemon_.signal(SIGSTOP);
    EXPECT_TRUE(open(kName));
    EXPECT_TRUE(open("it.tarno.Plain", kBackground));
    daemon_.signal(SIGCONT);
    EXPECT_EQ(takeRecord(), kBackgroundRecord);
    EXPECT_TRUE(host.gets(2));
}

TEST_F(WorkspaceStartTest, TheBusIsFoundInARuntimeFolderOfAnyName) {
    startBus({});
    const RecordingApplication host(kName);
    const std::string link = folder_.path("a b,guid=%41;größe");
    std::filesystem::create_directory_symlink(daemon_.folder(), link);
    const EnvironmentVariable runtimeFolder("XDG_RUNTIME_DIR", link);
    const EnvironmentVariable address("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
    EXPECT_TRUE(open(kName));
}

}  // namespace
}  // namespace quillet::test
