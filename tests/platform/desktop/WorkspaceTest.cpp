#include <QProcess>
#include <QTest>
#include <QWidget>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "platform/desktop/SessionBus.h"
#include "platform/desktop/Workspace.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/EnvironmentVariable.h"
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

// A workspace, and desktop entries whose program keeps what it is started with.
class WorkspaceTest : public testing::Test {
protected:
    bool open(std::string_view identifier, LaunchOptions options = kForeground) {
        return workspace_.openURLs(
            std::vector{URL::URLWithString(kText).value()}, identifier, options);
    }

    // GIO looks once where desktop entries are, and then not often.
    static void SetUpTestSuite() {
        if (data_ != nullptr) {
            return;
        }
        static const TemporaryFolder data;
        static const EnvironmentVariable home("XDG_DATA_HOME", data.path());
        data_ = &data;
        const std::string script = data.writeFile(
            "record.sh",
            "cd " + data.path() +
                "\necho \"${DESKTOP_STARTUP_ID-none} ${XDG_ACTIVATION_TOKEN-none} $*\" > new\n"
                "mv new record\n");
        for (const auto& [identifier, keys, isOpened] : kEntries) {
            std::string text = std::string("[Desktop Entry]\nType=Application\nName=Host\n") + keys;
            const std::size_t place = text.find("record");
            data.writeFile("applications/" + std::string(identifier) + ".desktop",
                           text.replace(place, 6, "/bin/sh " + script) + "\n");
        }
    }

    // What a desktop entry's program writes down; "" while nothing is.
    static std::string takeRecord() {
        const std::string record = data_->path("record");
        if (!waitUntil([&] { return std::filesystem::exists(record); })) {
            return "";
        }
        const std::string text = contentsOf(record);
        std::filesystem::remove(record);
        return text;
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
    static const TemporaryFolder* data_;
    platform::SessionBus bus_;
    platform::Workspace workspace_{bus_};
};

const TemporaryFolder* WorkspaceTest::data_ = nullptr;

TEST_F(WorkspaceTest, ARequestCarriesATokenOfTheLastInputOrSaysThatItStaysInTheBackground) {
    const RecordingApplication host(QStringLiteral("it.tarno.quillet.beta-8"));
    QWidget window;
    window.show();
    QTest::mousePress(window.windowHandle(), Qt::LeftButton);
    const std::string time = "_TIME" + std::to_string(QTest::lastMouseTimestamp);
    for (const auto options : {kForeground, kForeground, kBackground}) {
        EXPECT_TRUE(open("it.tarno.quillet.beta-8", options));
    }
    ASSERT_TRUE(waitUntil([&] { return host.requests().size() == 3; }));
    for (const auto& request : host.requests()) {
        EXPECT_EQ(request.urls, std::vector{kText});
    }
    QVariantMap data = host.requests()[0].platformData;
    const QVariant token = data.take(QStringLiteral("activation-token"));
    EXPECT_THAT(token.toString().toStdString(), MatchesRegex("[^ ]+" + time));
    EXPECT_EQ(data, (QVariantMap{{QStringLiteral("desktop-startup-id"), token}}));
    EXPECT_NE(host.requests()[1].platformData[QStringLiteral("activation-token")], token);
    EXPECT_EQ(host.requests()[2].platformData,
              (QVariantMap{{QStringLiteral("x-quillet-background"), true}}));
}

TEST_F(WorkspaceTest, WhatNoApplicationIsCalledIsFalseAndTheBusIsKept) {
    const RecordingApplication host(QString::fromStdString(kName));
    for (const std::string& identifier : {std::string("it.tarno\0quillet", 16),
                                          "it." + std::string(300, 'a'),
                                          std::string(),
                                          std::string("quillet"),
                                          std::string("it..tarno"),
                                          std::string(".it.tarno"),
                                          std::string("it.tarno."),
                                          std::string("it.1tarno"),
                                          std::string(":1.0"),
                                          std::string("../outside"),
                                          std::string("it.tarno.größe"),
                                          std::string("it.tarno.\xff"),
                                          std::string("it.tarno.absent")}) {
        EXPECT_FALSE(open(identifier)) << identifier;
    }
    EXPECT_FALSE(workspace_.openURLs({}, kName, kForeground));
    EXPECT_TRUE(open(kName));
    EXPECT_TRUE(waitUntil([&] { return host.requests().size() == 1; }));
}

TEST_F(WorkspaceTest, DesktopEntriesAreRunWhereTheirProgramIsThere) {
    const EnvironmentVariable stale("DESKTOP_STARTUP_ID", "stale");
    for (const auto& [identifier, keys, isOpened] : kEntries) {
        SCOPED_TRACE(identifier);
        ASSERT_EQ(open(identifier, kBackground), isOpened);
        ASSERT_TRUE(!isOpened || takeRecord() == "none none " + kText + "\n");
        ASSERT_EQ(open(identifier, kForeground), isOpened);
        EXPECT_THAT(isOpened ? takeRecord() : "",
                    MatchesRegex(isOpened ? "(quillet[^ ]+_TIME[0-9]+ ){2}quillet:[^ ]+\n" : ""));
    }
}

// A bus that starts a program which never comes up.
class WorkspaceStartTest : public WorkspaceTest {
protected:
    bool startWithSlowHost() {
        const std::string pid = std::to_string(QCoreApplication::applicationPid());
        daemon_.addService(
            kName,
            "/bin/sh " + folder_.writeFile("slow.sh",
                                           "touch " + folder_.path("started") +
                                               "\nexec tail -f --pid=" + pid + " /dev/null"));
        return daemon_.start();
    }

    TemporaryFolder folder_;
    PrivateBus daemon_;
    EnvironmentVariable address_{"DBUS_SESSION_BUS_ADDRESS", daemon_.address()};
};

TEST_F(WorkspaceStartTest, AProgramEndsOnceTheApplicationThatStartsHasItsRequest) {
    ASSERT_TRUE(startWithSlowHost());
    QProcess sender;
    sender.start(QStringLiteral(OPEN_URL),
                 {QString::fromStdString(kName), QString::fromStdString(kText)});
    ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(folder_.path("started")); }));
    EXPECT_EQ(sender.state(), QProcess::Running);
    const RecordingApplication host(QString::fromStdString(kName));
    EXPECT_TRUE(sender.waitForFinished());
    EXPECT_EQ(sender.exitCode(), 0);
    EXPECT_TRUE(waitUntil([&] { return host.requests().size() == 1; }));
}

TEST_F(WorkspaceStartTest, WaitingForAnApplicationThatNeverComesUpEnds) {
    ASSERT_TRUE(startWithSlowHost());
    EXPECT_TRUE(open(kName));
    EXPECT_FALSE(workspace_.flush(std::chrono::milliseconds(50)));
}

TEST_F(WorkspaceStartTest, ARequestThatNobodyTakesGoesToTheDesktopEntry) {
    daemon_.addService("it.tarno.Plain", "/bin/false");
    ASSERT_TRUE(daemon_.start());
    EXPECT_TRUE(open("it.tarno.Plain", kBackground));
    EXPECT_EQ(takeRecord(), "none none " + kText + "\n");
}

}  // namespace
}  // namespace quillet::test
