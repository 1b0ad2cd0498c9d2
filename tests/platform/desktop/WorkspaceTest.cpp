#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <filesystem>
#include <gmock/gmock.h>
#include <mutex>
#include <string>
#include <vector>

#include "platform/desktop/SessionBus.h"
#include "platform/desktop/Workspace.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RecordingApplication.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"

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

// A workspace, and desktop entries whose program writes down what it is started with.
class WorkspaceTest : public testing::Test {
protected:
    WorkspaceTest() { entryFolder(); }

    bool open(std::string_view identifier, LaunchOptions options = kForeground) {
        return workspace_.openURLs(
            std::vector{URL::URLWithString(kText).value()}, identifier, options);
    }
    static bool gets(const RecordingApplication& host, std::size_t requests) {
        return waitUntil([&] { return host.requests().size() == requests; });
    }

    // Waits for the record of a desktop entry's program; "" if none comes.
    static std::string takeRecord() {
        const std::string path = entryFolder().path("record");
        std::string record;
        waitUntil([&] { return !(record = contentsOf(path)).empty(); });
        std::filesystem::remove(path);
        return record;
    }

    struct Entry {
        const char* identifier;
        const char* keys;
        bool isOpened;
    };
    static constexpr Entry kEntries[] = {
        {"it.tarno.Plain", "Exec=record %U", true},
        {"it.tarno.Closed", "Exec=record", false},
        {"it.tarno.OfTheBus", "Exec=record %u\nDBusActivatable=true", true},
        {"it.tarno.Untried", "Exec=record %U\nTryExec=/no/such", false},
        {"it.tarno.Broken", "Exec=/no/such record %U", false},
        {"../outside", "Exec=record %U", false},
    };
    platform::SessionBus bus_;
    platform::Workspace workspace_{bus_};

private:
    // One folder for all tests, since GIO looks up the folders of desktop entries only once.
    static const TemporaryFolder& entryFolder() {
        static const TemporaryFolder folder;
        static const EnvironmentVariable home("XDG_DATA_HOME", folder.path());
        static std::once_flag once;
        std::call_once(once, [] {
            const std::string script =
                folder.writeFile("record.sh",
                                 "echo \"${DESKTOP_STARTUP_ID-none} ${XDG_ACTIVATION_TOKEN-none} \""
                                 "\"${DBUS_SESSION_BUS_ADDRESS+bus }$*\" >> " +
                                     folder.path("record"));
            for (const auto& [identifier, keys, isOpened] : kEntries) {
                std::string text = std::string("[Desktop Entry]\nType=Application\nName=Host\n");
                text += keys;
                text.replace(text.find("record"), 6, "/bin/sh " + script);
                folder.writeFile("applications/" + std::string(identifier) + ".desktop", text);
            }
        });
        return folder;
    }
};

TEST_F(WorkspaceTest, ARequestCarriesATokenOfItsInputOrSaysThatItStaysInTheBackground) {
    const RecordingApplication host(QStringLiteral("it.tarno.quillet.beta-8"));
    QPushButton button;
    QObject::connect(&button, &QPushButton::pressed, &button, [this] {
        EXPECT_TRUE(open("it.tarno.quillet.beta-8", kForeground));
    });
    button.show();
    QTest::mousePress(button.windowHandle(), Qt::LeftButton);
    const std::string time = "_TIME" + std::to_string(QTest::lastMouseTimestamp);
    for (const auto options : {kForeground, kBackground}) {
        EXPECT_TRUE(open("it.tarno.quillet.beta-8", options));
    }
    ASSERT_TRUE(gets(host, 3));
    for (const auto& request : host.requests()) {
        EXPECT_EQ(request.urls, std::vector{kText});
    }
    QVariantMap data = host.requests()[0].platformData;
    const QVariant token = data.take(QStringLiteral("activation-token"));
    EXPECT_THAT(token.toString().toStdString(), MatchesRegex("[^ ]+" + time));
    EXPECT_EQ(data, (QVariantMap{{QStringLiteral("desktop-startup-id"), token}}));
    const QVariant later = host.requests()[1].platformData[QStringLiteral("activation-token")];
    EXPECT_FALSE(later.toString().endsWith(QString::fromStdString(time)));  // made without input
    EXPECT_EQ(host.requests()[2].platformData,
              (QVariantMap{{QStringLiteral("x-quillet-background"), true}}));
}

TEST_F(WorkspaceTest, WhatNoApplicationIsCalledIsFalseAndTheBusIsKept) {
    const RecordingApplication host(QString::fromStdString(kName));
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
    EXPECT_TRUE(gets(host, 1));
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
    EXPECT_EQ(QProcess::execute(QStringLiteral(OPEN_URL),
                                {QStringLiteral("it.tarno.Plain"), QString::fromStdString(kText)}),
              0);
    EXPECT_THAT(takeRecord(), MatchesRegex(kTokens + "quillet:[^ ]+\n"));
    EXPECT_FALSE(std::filesystem::exists(starter + ".started"));
}

// A bus that starts programs which never take their name.
class WorkspaceStartTest : public WorkspaceTest {
protected:
    void startBus(const std::vector<std::string>& slowHosts) {
        const std::string pid = std::to_string(QCoreApplication::applicationPid());
        const std::string script = folder_.writeFile(
            "slow.sh", "touch $0.started\nexec tail -f --pid=" + pid + " /dev/null");
        for (const std::string& identifier : slowHosts) {
            daemon_.addService(identifier, "/bin/sh " + script);
        }
        ASSERT_TRUE(daemon_.start());
    }
    bool takeStart() {
        return waitUntil([&] { return std::filesystem::remove(folder_.path("slow.sh.started")); });
    }

    TemporaryFolder folder_;
    PrivateBus daemon_;
    EnvironmentVariable address_{"DBUS_SESSION_BUS_ADDRESS", daemon_.address()};
};

TEST_F(WorkspaceStartTest, AProgramEndsOnceTheApplicationThatStartsHasItsRequest) {
    startBus({kName, "it.tarno.quillet2"});
    QStringList arguments{QString::fromStdString(kName), QString::fromStdString(kText)};
    for (const char* identifier : {"it.tarno.quillet", "it.tarno.quillet2"}) {
        SCOPED_TRACE(identifier);
        arguments[0] = QString::fromUtf8(identifier);
        QProcess sender;
        sender.start(QStringLiteral(OPEN_URL), arguments);
        ASSERT_TRUE(takeStart());
        sender.terminate();
        EXPECT_EQ(sender.state(), QProcess::Running);
        const RecordingApplication host(arguments[0]);
        EXPECT_TRUE(sender.waitForFinished());
        EXPECT_TRUE(sender.exitStatus() == QProcess::NormalExit && sender.exitCode() == 0);
        EXPECT_TRUE(gets(host, 1));
        arguments.append(QStringLiteral("stay"));
    }
}

TEST_F(WorkspaceStartTest, WaitingForAnApplicationThatNeverComesUpEnds) {
    startBus({kName});
    EXPECT_TRUE(open(kName));
    const LogCapture log;
    EXPECT_FALSE(workspace_.flush(std::chrono::milliseconds(50)));
    EXPECT_EQ(log.lines(), std::vector{"Workspace no application took a request " + kName});
}

TEST_F(WorkspaceStartTest, OnlyARequestThatNobodyTakesGoesToTheDesktopEntry) {
    daemon_.addService("it.tarno.Plain", "/bin/false");
    daemon_.setStartTime(50);
    startBus({"it.tarno.OfTheBus"});
    const auto expectEntryOpened = [this](const char* identifier) {
        EXPECT_TRUE(open(identifier, kBackground));
        EXPECT_EQ(takeRecord(), kBackgroundRecord);
    };
    expectEntryOpened("it.tarno.Plain");
    expectEntryOpened("it.tarno.OfTheBus");
    RecordingApplication host(QStringLiteral("it.tarno.Plain"));
    host.failWith("it.tarno.Error.Failed");
    EXPECT_TRUE(open("it.tarno.Plain", kForeground));
    EXPECT_TRUE(gets(host, 1));
    host.failWith("org.freedesktop.DBus.Error.UnknownMethod");
    for (const std::size_t asked :
         {2, 3}) {  // a wrong record of the failed request would come first
        expectEntryOpened("it.tarno.Plain");
        EXPECT_EQ(host.requests().size(), asked);
    }
}

TEST_F(WorkspaceStartTest, ARequestOutlivesItsBusUntilAnApplicationHasIt) {
    startBus({kName});
    EXPECT_TRUE(open(kName));
    ASSERT_TRUE(takeStart());
    daemon_.stop();
    for (const std::size_t waiting : {1, 0}) {
        SCOPED_TRACE(waiting);
        ASSERT_TRUE(daemon_.start());
        const RecordingApplication host(QString::fromStdString(kName));
        EXPECT_TRUE(open(kName, kBackground));
        EXPECT_TRUE(gets(host, waiting + 1));
        EXPECT_TRUE(
            host.requests().back().platformData.contains(QStringLiteral("x-quillet-background")));
        EXPECT_TRUE(open(kName));
        EXPECT_TRUE(workspace_.flush());  // the host has this one, but does not answer
        daemon_.stop();
    }
}

TEST_F(WorkspaceStartTest, ABusThatIsSlowToAnswerStillPassesRequestsOn) {
    startBus({});
    const RecordingApplication host(QString::fromStdString(kName));
    EXPECT_TRUE(open(kName));
    daemon_.pause();
    EXPECT_TRUE(open(kName));
    EXPECT_TRUE(open("it.tarno.Plain", kBackground));
    daemon_.resume();
    EXPECT_EQ(takeRecord(), kBackgroundRecord);
    EXPECT_TRUE(gets(host, 2));
}

TEST_F(WorkspaceStartTest, TheBusIsFoundInARuntimeFolderOfAnyName) {
    startBus({});
    const RecordingApplication host(QString::fromStdString(kName));
    const std::string link = folder_.path("a b,guid=%41;größe");
    std::filesystem::create_directory_symlink(daemon_.folder(), link);
    const EnvironmentVariable runtimeFolder("XDG_RUNTIME_DIR", link);
    const EnvironmentVariable address("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
    EXPECT_TRUE(open(kName));
}

}  // namespace
}  // namespace quillet::test
