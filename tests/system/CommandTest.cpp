// Clicks in the real panel, and a host in a process of its own that follows them, over a bus that
// starts the host where it may.

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QTest>
#include <QWindow>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "app/PanelController.h"
#include "platform/desktop/DistributedNotificationCenter.h"
#include "platform/desktop/Queues.h"
#include "platform/desktop/SessionBus.h"
#include "platform/ui/ImageButton.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/WaitUntil.h"
#include "tests/widget/StoreFixture.h"
#include "views/TodayTableView.h"
#include "views/TodayTableViewCell.h"

namespace quillet::test {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::string>;
using ::testing::ElementsAre;

using Control = platform::ImageButton* (TodayTableViewCell::*)() const;
constexpr Control kRow = nullptr;  // beside the buttons
constexpr Control kReply = &TodayTableViewCell::replyButton;
constexpr Control kArchive = &TodayTableViewCell::archiveButton;
constexpr Control kTrash = &TodayTableViewCell::trashButton;

constexpr int kLimit = 30'000;  // milliseconds
const std::string kHost = "it.tarno.quillet";

constexpr const char* kThousandNotifications = R"py(
from gi.repository import Gio, GLib
bus = Gio.bus_get_sync(Gio.BusType.SESSION)
for _ in range(1000):
    bus.emit_signal(None, "/it/tarno/quillet/DistributedNotifications",
                    "it.tarno.quillet.DistributedNotifications", "Posted",
                    GLib.Variant("(ss)", ("k_today_widget_key", "k_today_widget_object")))
bus.flush_sync()
)py";

template <typename Condition>
bool eventually(Condition condition) {
    return waitUntil(condition, kLimit);
}

class CommandTest : public StoreFixture {
protected:
    CommandTest() {
        writeStore({"1", "2", "3", "4", "5"});
        writeFile("a@x", "broken", "every read logs a line about this file");
    }
    ~CommandTest() override {
        panel_.reset();
        platform::drainBackgroundQueue();
        QCoreApplication::sendPostedEvents();
    }

    // The messages, the first one newest.
    void writeStore(const Texts& identifiers) {
        std::string messages;
        auto date = static_cast<std::int64_t>(identifiers.size());
        for (const std::string& identifier : identifiers) {
            messages += messageXml(identifier, 1000 * date--);
        }
        writeFile("a@x", "INBOX.plist", fileXml(messages));
    }

    // A bus that starts the sample host for whoever calls one of these names.
    void startBus(const Texts& hosts = {kHost}) {
        for (const std::string& name : hosts) {
            daemon_.addService(
                name,
                "/bin/sh " + container.writeFile(name + ".sh",
                                                 "echo $$ > " + container.path("process") +
                                                     "\nexec " QUILLET_BIN
                                                     "/quillet-sample-host run --identifier " +
                                                     name + " >> " + container.path(name) + "\n"));
        }
        ASSERT_TRUE(daemon_.start());
    }
    // Starts the host before anybody calls it; its process.
    pid_t startHost() {
        auto bus = QDBusConnection::connectToBus(QString::fromStdString(daemon_.address()),
                                                 QStringLiteral("starter"));
        EXPECT_TRUE(bus.interface()->startService(QString::fromStdString(kHost)).isValid());
        QDBusConnection::disconnectFromBus(QStringLiteral("starter"));
        pid_t process = 0;
        std::ifstream(container.path("process")) >> process;
        return process;
    }

    void showPanel() {
        panel_.emplace(platform::Look::Light);
        // One read as the panel appears, another one once it is up.
        const std::size_t reads = log.lines().size() + 2;
        panel_->show();
        ASSERT_TRUE(eventually([&] { return log.lines().size() >= reads; }));
        for (const char* turn : {"the list", "its height"}) {
            bool isOver = false;
            platform::mainQueue().async([&] { isOver = true; });
            ASSERT_TRUE(eventually([&] { return isOver; })) << turn;
        }
    }

    void click(std::size_t row, Control control) {
        auto* const cell = static_cast<TodayTableViewCell*>(table().cellAtRow(row));
        const QWidget* target = cell->fromField();
        if (control != kRow) {
            target = (cell->*control)();
        }
        QTest::mouseClick(panel_->panel().windowHandle(),
                          Qt::LeftButton,
                          {},
                          target->mapTo(&panel_->panel(), target->rect().center()));
        QCoreApplication::processEvents();
    }

    // The commands that the host has followed so far: word, message, what became of it.
    Texts followed(const std::string& name = kHost) const {
        std::ifstream file(container.path(name));
        Texts commands;
        for (std::string line; std::getline(file, line);) {
            const Json json = Json::parse(line);
            commands.push_back(json.value("command", "") + " " + json.value("messageid", "") + " " +
                               json.value("outcome", "") +
                               (json.value("background", false) ? " in the background" : "") +
                               (json.value("token", false) ? " with a token" : ""));
        }
        return commands;
    }
    bool follows(std::size_t commands) {
        return eventually([&] { return followed().size() >= commands; });
    }
    bool shows(const Texts& identifiers) {
        return eventually([&] { return shownRows() == identifiers; });
    }
    double height() { return panel_->widget().viewHeightContraint()->constant(); }

    Texts shownRows() { return identifiersOf(panel_->widget().dataToShow()); }
    TodayTableView& table() {
        return static_cast<TodayTableView&>(*panel_->widget().myTableView());
    }

    PrivateBus daemon_;
    EnvironmentVariable address_{"DBUS_SESSION_BUS_ADDRESS", daemon_.address()};
    TemporaryFolder config_;
    EnvironmentVariable configVariable_{"XDG_CONFIG_HOME", config_.path()};
    std::optional<PanelController> panel_;
};

TEST_F(CommandTest, EveryControlReachesAHostThatIsStartedForItAndThePanelFollows) {
    startBus();
    showPanel();
    click(2, kArchive);
    EXPECT_EQ(shownRows(), (Texts{"1", "2", "4", "5"}));
    ASSERT_TRUE(follows(1));
    click(0, kReply);
    ASSERT_TRUE(follows(2));
    click(1, kRow);
    ASSERT_TRUE(follows(3));
    click(3, kTrash);
    ASSERT_TRUE(follows(4));
    EXPECT_THAT(followed(),
                ElementsAre("archive 3 removed in the background",
                            "reply 1 found with a token",
                            "open 2 found with a token",
                            "delete 5 removed in the background"));
    EXPECT_TRUE(eventually([&] { return height() == 3 * 60; }));
    EXPECT_EQ(shownRows(), (Texts{"1", "2", "4"}));
    EXPECT_EQ(read(), (Texts{"1", "2", "4"}));
}

TEST_F(CommandTest, WithoutAHostTheRowLeavesUntilAReadFindsItsMessageAgain) {
    startBus({});
    showPanel();
    click(2, kArchive);
    EXPECT_EQ(shownRows(), (Texts{"1", "2", "4", "5"}));
    EXPECT_EQ(table().numberOfRows(), 4U);
    EXPECT_EQ(height(), 5 * 60);
    click(0, kReply);
    EXPECT_EQ(shownRows(), (Texts{"1", "2", "4", "5"}));
    platform::DistributedNotificationCenter::defaultCenter().postNotification(
        "k_today_widget_key", "k_today_widget_object");
    EXPECT_TRUE(shows({"1", "2", "3", "4", "5"}));
}

TEST_F(CommandTest, AHostThatHangsGetsEverythingLaterAndOnlyWhatIsAUrl) {
    writeStore({"1", "no url", "3", "4", "5"});
    startBus();
    const pid_t host = startHost();
    showPanel();
    ASSERT_EQ(kill(host, SIGSTOP), 0);
    click(1, kArchive);
    EXPECT_EQ(table().numberOfRows(), 5U);
    click(4, kArchive);
    EXPECT_EQ(table().numberOfRows(), 4U);
    // A rebuild has taken the message off the list meanwhile.
    auto rest = std::make_shared<std::vector<std::shared_ptr<ExtensionMessage>>>(
        *panel_->widget().dataToShow());
    rest->erase(rest->begin() + 2);
    panel_->widget().setDataToShow(rest);
    click(2, kTrash);
    EXPECT_EQ(table().numberOfRows(), 4U);
    EXPECT_TRUE(followed().empty());
    ASSERT_EQ(kill(host, SIGCONT), 0);
    ASSERT_TRUE(follows(2));
    EXPECT_THAT(
        followed(),
        ElementsAre("archive 5 removed in the background", "delete 3 removed in the background"));
    EXPECT_TRUE(shows({"1", "no url", "4"}));
}

TEST_F(CommandTest, AThousandNotificationsMakeFewReadsAndTheRightEnd) {
    startBus({});
    showPanel();
    const std::size_t before = log.lines().size();
    writeStore({"6", "5"});
    QProcess host;
    host.start(QStringLiteral("/usr/bin/python3"),
               {QStringLiteral("-c"), QString::fromLatin1(kThousandNotifications)});
    ASSERT_TRUE(host.waitForFinished(kLimit));  // the panel is busy meanwhile
    ASSERT_EQ(host.exitCode(), 0) << host.readAllStandardError().toStdString();
    EXPECT_TRUE(shows({"6", "5"}));
    EXPECT_LE(log.lines().size(), before + 10);
}

TEST_F(CommandTest, PanelsOfEachLineReachTheirHost) {
    std::filesystem::create_directory_symlink("SharedData", container.path("SharedDataBeta"));
    startBus({kHost, kHost + ".beta8"});
    for (const auto& [line, host] : {std::pair("beta8", kHost + ".beta8"), {"beta9", kHost}}) {
        const EnvironmentVariable own("QUILLET_BUNDLE_IDENTIFIER", kHost + "." + line + ".today");
        showPanel();
        click(0, kRow);
        EXPECT_TRUE(eventually([&] { return followed(host).size() == 1; })) << line;
    }
}

TEST_F(CommandTest, ARestartedBusBringsHostAndPanelTogetherAgain) {
    startBus();
    startHost();
    showPanel();
    daemon_.stop();
    click(0, kReply);
    bool isBack = false;
    platform::SessionBus::shared().addObserver(&isBack, [&] { isBack = true; });
    ASSERT_TRUE(daemon_.start());
    ASSERT_TRUE(eventually([&] { return isBack; }));
    platform::SessionBus::shared().removeObserver(&isBack);
    click(2, kTrash);
    ASSERT_TRUE(follows(1));
    EXPECT_THAT(followed(), ElementsAre("delete 3 removed in the background"));
    EXPECT_TRUE(eventually([&] { return height() == 4 * 60; }));
}

}  // namespace
}  // namespace quillet::test
