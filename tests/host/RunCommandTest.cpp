// The running host as a process of its own, asked over the session bus.

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/StoreWriter.h"
#include "platform/desktop/DistributedNotificationCenter.h"
#include "platform/files/FileCoordinator.h"
#include "tests/support/OwnContainer.h"
#include "tests/support/WaitUntil.h"

namespace quillet::host {
namespace {

using Json = nlohmann::json;

const QString kName = QStringLiteral("it.tarno.quillet");
const QString kOpen = QStringLiteral("quillet://open?mail=a&messageid=1&folderstandardid=1");
const QString kArchive = QStringLiteral("quillet://archive?mail=a&messageid=1&folderstandardid=1");
const QString kDraft = QStringLiteral("quillet://compose?subject=S&to=a%3B&attachment_0=%2Fgone");
const QVariantMap kToken{{QStringLiteral("activation-token"), QStringLiteral("t_TIME1")}};
const QVariantMap kBackground{{QStringLiteral("x-quillet-background"), true}};

class RunCommand : public testing::Test, protected test::OwnContainer {
protected:
    RunCommand() {
        Array messages{Dictionary{{"messageId", "1"}, {"account", "a"}},
                       Dictionary{{"messageId", "2"}, {"account", "a"}}};
        const std::vector<StoreFile> files{{"Today/a/INBOX",
                                            Dictionary{{"data", std::move(messages)}},
                                            PropertyListFormat::Binary}};
        EXPECT_FALSE(writeStore(dataFolder_, files));
        center_.addObserver(
            this, "k_today_widget_key", "k_today_widget_object", [this](const auto&, const auto&) {
                ++notifications_;
            });
    }
    ~RunCommand() override {
        center_.removeObserver(this);
        host_.kill();
        host_.waitForFinished();
    }

    void start(QProcess& process, const QStringList& more = {}) {
        process.start(QStringLiteral(QUILLET_SAMPLE_HOST),
                      QStringList{QStringLiteral("run"),
                                  QStringLiteral("--container"),
                                  QString::fromStdString(container.path())} +
                          more);
    }

    void startHost(const QStringList& more = {}) {
        start(host_, more);
        ASSERT_TRUE(test::waitUntil([&] { return bus_.interface()->isServiceRegistered(kName); }))
            << host_.readAllStandardError().toStdString();
    }

    QDBusMessage call(const char* method, const QVariantList& arguments) {
        auto message = QDBusMessage::createMethodCall(kName,
                                                      QStringLiteral("/it/tarno/quillet"),
                                                      QStringLiteral("org.freedesktop.Application"),
                                                      QLatin1String(method));
        message.setArguments(arguments);
        return bus_.call(message);
    }

    // The next line of the host's log; null where none comes.
    Json nextLine() {
        if (!test::waitUntil([this] { return host_.canReadLine(); })) {
            return {};
        }
        return Json::parse(host_.readLine().toStdString());
    }

    std::string dataFolder_ = container.path("SharedData");
    QDBusConnection bus_ = QDBusConnection::sessionBus();
    platform::DistributedNotificationCenter& center_ =
        platform::DistributedNotificationCenter::defaultCenter();
    int notifications_ = 0;
    QProcess host_;
};

TEST_F(RunCommand, LogTellsWhatCameAndWhatBecameOfIt) {
    startHost();
    const QString noUrl = QStringLiteral("\n \"");
    const QString noDraft = QStringLiteral("quillet://send?to=%ff");
    const QVariantMap odd{{QStringLiteral("x-quillet-background"), QStringLiteral("yes")},
                          {QStringLiteral("activation-token"), QStringList{kOpen}}};
    const QString gone = QStringLiteral("quillet://open?mail=a&messageid=9&folderstandardid=1");
    const struct {
        const char* method;
        QVariantList arguments;
        const char* outcome;
        bool isShown;
        bool isInFront;
    } rows[] = {
        {"Open", {QStringList{kOpen}, kToken}, "found", true, true},
        {"Open", {QStringList{kOpen}, QVariantMap{}}, "found", true, false},
        {"Open", {QStringList{kOpen}, kBackground}, "found", false, false},
        {"Open", {QStringList{gone}, kToken}, "not found", true, true},
        {"Activate", {QVariantMap{}}, "activated", true, true},
        {"Activate", {kBackground}, "activated", false, false},
        {"Open", {QStringList{noUrl}, kToken}, "ignored", false, false},
        {"Open", {QStringList{}, kToken}, "activated", true, true},
        {"Open", {kOpen, 5}, "ignored", false, false},
        {"Open", {QStringList{kDraft}, kToken}, "received", true, true},
        {"Open", {QStringList{noDraft}, kToken}, "ignored", false, false},
        {"Activate", {}, "ignored", false, false},
        {"Open", {QStringList{kOpen}, odd}, "found", true, false},
        {"Open", {QStringList{kArchive}, kBackground}, "removed", false, false},
        {"Open", {QStringList{kArchive}, kBackground}, "not found", false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.method << " " << row.outcome);
        call(row.method, row.arguments);
        const Json line = nextLine();
        ASSERT_FALSE(line.is_null()) << host_.readAllStandardError().toStdString();
        EXPECT_EQ(line["call"], row.method);
        EXPECT_EQ(line["outcome"], row.outcome) << line;
        EXPECT_EQ(line["shown"], row.isShown) << line;
        EXPECT_EQ(line["front"], row.isInFront) << line;
        if (line["outcome"] == "received") {
            EXPECT_EQ(line["subject"], "S");
            EXPECT_EQ(line["to"], "a;");
            EXPECT_EQ(line["attachments"], 1);
        }
    }
    EXPECT_EQ(call("Quit", {}).type(), QDBusMessage::ErrorMessage);
    EXPECT_TRUE(test::waitUntil([this] { return notifications_ == 1; })) << notifications_;
    host_.terminate();
    EXPECT_TRUE(host_.waitForFinished());
    EXPECT_EQ(host_.exitCode(), 0);
}

TEST_F(RunCommand, CallsAreAnsweredAndKeptInOrderWhileAReaderHoldsTheStore) {
    startHost();
    const platform::FileCoordinator coordinator(dataFolder_);
    coordinator.coordinateReading(dataFolder_ + "/Today", [this](const auto&) {
        EXPECT_EQ(call("Open", {QStringList{kArchive, kOpen}, kBackground}).type(),
                  QDBusMessage::ReplyMessage);
        EXPECT_EQ(call("Activate", {QVariantMap{}}).type(), QDBusMessage::ReplyMessage);
        EXPECT_FALSE(host_.canReadLine());
    });
    EXPECT_EQ(nextLine()["outcome"], "removed");
    EXPECT_EQ(nextLine()["outcome"], "not found");
    EXPECT_EQ(nextLine()["outcome"], "activated");
}

TEST_F(RunCommand, SecondStartHandsItsUrlsToTheFirst) {
    startHost({kOpen});
    EXPECT_EQ(nextLine()["call"], "run");
    QProcess second;
    start(second, {kArchive});
    ASSERT_TRUE(second.waitForFinished());
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_NE(second.readAllStandardError().indexOf("running already"), -1);
    EXPECT_EQ(nextLine()["outcome"], "removed");
}

TEST_F(RunCommand, StartUnderANameThatTheBusRefusesSaysWhy) {
    for (const char* name : {"no path", "name"}) {
        QProcess process;
        start(process, {QStringLiteral("--identifier"), QLatin1String(name)});
        ASSERT_TRUE(process.waitForFinished());
        EXPECT_EQ(process.exitCode(), 1);
        EXPECT_NE(process.readAllStandardError().indexOf(name), -1) << name;
    }
}

}  // namespace
}  // namespace quillet::host
