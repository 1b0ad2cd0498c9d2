// Clicks in the panel's window and a host that follows them. Both are the real programs, each in a
// process of its own, and the bus between them starts the host.

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <list>
#include <nlohmann/json.hpp>

#include "platform/desktop/DistributedNotificationCenter.h"
#include "platform/desktop/SessionBus.h"
#include "platform/files/FileCoordinator.h"
#include "tests/support/CoordinatingProcess.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/WaitUntil.h"
#include "tests/system/TodayProcess.h"
#include "tests/widget/StoreFixture.h"

namespace quillet::test {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::string>;
using ::testing::ElementsAre;

constexpr int kLimit = 30'000;  // milliseconds
constexpr const char* kRead =
    "updateData error deserialize";  // logged once a read, for a broken file
const std::string kHost = "it.tarno.quillet";

template <typename Condition>
bool eventually(Condition condition) {
    return waitUntil(condition, kLimit);
}

class CommandTest : public StoreFixture {
protected:
    CommandTest() {
        writeStore({"1", "2", "3", "4", "5"});
        writeFile("a@x", "broken", "no property list");
    }

    // Writes messages, the newest first.
    void writeStore(const Texts& identifiers) {
        std::string messages;
        auto date = static_cast<std::int64_t>(identifiers.size());
        for (const std::string& identifier : identifiers) {
            messages += messageXml(identifier, 1000 * date--);
        }
        writeFile("a@x", "INBOX.plist", fileXml(messages));
    }

    // Starts a bus that starts the sample host when one of these names is called.
    void startBus(const Texts& hosts = {kHost}) {
        for (const std::string& name : hosts) {
            daemon_.addService(name,
                               "/bin/sh -c 'exec " QUILLET_BIN
                               "/quillet-sample-host run --identifier " +
                                   name + " >> " + container.path(name) + "'");
        }
        ASSERT_TRUE(daemon_.start());
    }
    // Starts the host before anybody calls it; returns its process.
    static pid_t startHost() {
        platform::SessionBus sessionBus;
        const QDBusConnection bus = sessionBus.connection();
        const QString name = QString::fromStdString(kHost);
        EXPECT_TRUE(bus.interface()->startService(name).isValid());
        return static_cast<pid_t>(bus.interface()->servicePid(name).value());
    }
    // Says, as a host does, that the store has changed.
    static void notify(int times = 1) {
        platform::SessionBus bus;
        platform::DistributedNotificationCenter center(bus);
        for (int i = 0; i < times; ++i) {
            EXPECT_TRUE(center.postNotification("k_today_widget_key", "k_today_widget_object"));
        }
    }

    // Runs `action` while this process writes an item, as a host does.
    void whileHeld(const std::string& item, const std::function<void()>& action) const {
        const std::string folder = container.path("SharedData");
        EXPECT_FALSE(platform::FileCoordinator(folder).coordinateWriting(
            folder + "/" + item, [&action](const std::string& /*path*/) { action(); }));
    }

    void showPanel() {
        panel_ = &panels_.emplace_back();
        // The panel reads as it appears and again once it is up. List and height follow one turn
        // of the event loop later each, and every answer takes a turn.
        ASSERT_TRUE(eventually([&] { return panel_->logged(kRead) == 2; }));
        ASSERT_TRUE(shows(read()));
        EXPECT_EQ(panel_->height(), 60 * panel_->rows().size());
    }

    // The commands that the host has followed so far: word, message, outcome.
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
        return eventually([&] { return panel_->rows() == identifiers; });
    }

    PrivateBus daemon_;
    EnvironmentVariable address_{"DBUS_SESSION_BUS_ADDRESS", daemon_.address()};
    TemporaryFolder config_;
    EnvironmentVariable configVariable_{"XDG_CONFIG_HOME", config_.path()};
    std::list<TodayProcess> panels_;
    TodayProcess* panel_ = nullptr;  // the last one
};

TEST_F(CommandTest, EveryControlReachesAHostThatIsStartedForItAndThePanelFollows) {
    startBus();
    showPanel();
    panel_->ask("click 2 Archive");
    EXPECT_TRUE(shows({"1", "2", "4", "5"}));
    ASSERT_TRUE(follows(1));
    panel_->ask("click 0 Reply");
    ASSERT_TRUE(follows(2));
    panel_->ask("click 1");
    ASSERT_TRUE(follows(3));
    panel_->ask("click 3 Delete");
    ASSERT_TRUE(follows(4));
    EXPECT_THAT(followed(),
                ElementsAre("archive 3 removed in the background",
                            "reply 1 found with a token",
                            "open 2 found with a token",
                            "delete 5 removed in the background"));
    EXPECT_TRUE(eventually([&] { return panel_->height() == 3 * 60; }));
    EXPECT_THAT(panel_->rows(), ElementsAre("1", "2", "4"));
    EXPECT_THAT(read(), ElementsAre("1", "2", "4"));
}

TEST_F(CommandTest, WithoutAHostTheRowLeavesUntilAReadFindsItsMessageAgain) {
    startBus({});
    showPanel();
    panel_->ask("click 2 Archive");
    EXPECT_TRUE(shows({"1", "2", "4", "5"}));
    panel_->ask("click 0 Reply");
    EXPECT_THAT(panel_->rows(), ElementsAre("1", "2", "4", "5"));
    EXPECT_EQ(panel_->height(), 5 * 60) << "until the next rebuild";
    notify();
    EXPECT_TRUE(shows({"1", "2", "3", "4", "5"}));
}

TEST_F(CommandTest, AHostThatHangsGetsEverythingLaterAndOnlyWhatIsAUrl) {
    writeStore({"1", "no url", "3", "4"});
    startBus();
    const pid_t host = startHost();
    showPanel();
    ASSERT_EQ(kill(host, SIGSTOP), 0);
    panel_->ask("click 1 Archive");
    panel_->ask("click 3 Archive");
    EXPECT_TRUE(shows({"1", "no url", "3"}));
    panel_->ask("click 0 Reply");
    ASSERT_EQ(kill(host, SIGCONT), 0);
    ASSERT_TRUE(follows(2));
    EXPECT_THAT(followed(),
                ElementsAre("archive 4 removed in the background", "reply 1 found with a token"));
    EXPECT_THAT(panel_->rows(), ElementsAre("1", "no url", "3"));
}

TEST_F(CommandTest, AButtonWhoseMessageLeavesUnderThePointerSendsNothing) {
    startBus();
    showPanel();
    for (const int row : {2, 3}) {  // another message takes its place; none does
        panel_->ask("press " + std::to_string(row) + " Delete");
        Texts rest = panel_->rows();
        rest.erase(rest.begin() + row);
        writeStore(rest);
        notify();
        EXPECT_TRUE(shows(rest));
        panel_->ask("release");
    }
    panel_->ask("click 0 Archive");
    ASSERT_TRUE(follows(1));
    EXPECT_THAT(followed(), ElementsAre("archive 1 removed in the background"));
    EXPECT_TRUE(shows({"2", "4"}));
}

TEST_F(CommandTest, AThousandNotificationsMakeFewReadsAndTheRightEnd) {
    startBus({});
    showPanel();
    const std::size_t before = panel_->logged(kRead);
    // The panel's first read of these waits until the host releases its store.
    const auto write = [this] {
        writeStore({"6", "5"});
        notify(1000);
    };
    whileHeld("Today", write);
    EXPECT_TRUE(shows({"6", "5"}));
    writeStore({"7"});
    notify();
    EXPECT_TRUE(shows({"7"})) << "what came before it has been dealt with by now";
    EXPECT_LE(panel_->logged(kRead), before + 10);
}

TEST_F(CommandTest, PanelsOfEachLineReachTheirHost) {
    std::filesystem::create_directory_symlink("SharedData", container.path("SharedDataBeta"));
    startBus({kHost, kHost + ".beta8"});
    for (const auto& [line, host] : {std::pair("beta8", kHost + ".beta8"), {"beta9", kHost}}) {
        const EnvironmentVariable own("QUILLET_BUNDLE_IDENTIFIER", kHost + "." + line + ".today");
        showPanel();
        panel_->ask("click 0");
        EXPECT_TRUE(eventually([&] { return followed(host).size() == 1; })) << line;
    }
}

TEST_F(CommandTest, ARestartedBusBringsHostAndPanelTogetherAgain) {
    startBus();
    startHost();
    showPanel();
    daemon_.stop();
    panel_->ask("click 0 Reply");
    ASSERT_TRUE(daemon_.start());
    EXPECT_TRUE(eventually([&] {  // only a notification makes the panel read again
        notify();
        return panel_->logged(kRead) > 2;
    }));
    panel_->ask("click 2 Delete");
    ASSERT_TRUE(follows(1));
    EXPECT_THAT(followed(), ElementsAre("delete 3 removed in the background"));
    EXPECT_TRUE(shows({"1", "2", "4", "5"}));
    EXPECT_TRUE(eventually([&] { return panel_->height() == 4 * 60; }));
    EXPECT_TRUE(TodayProcess().ends());
    EXPECT_TRUE(shows({})) << "the second start hides the panel";
}

TEST_F(CommandTest, APanelEndsWhenItIsToldToAlsoWhileItsHostHoldsALock) {
    startBus({});
    const auto quit = [](TodayProcess& panel) { panel.quit(); };
    const auto terminate = [](TodayProcess& panel) { kill(panel.process(), SIGTERM); };
    showPanel();
    quit(*panel_);
    EXPECT_TRUE(panel_->ends()) << "with its window shown";
    const struct {
        const char* item;
        std::function<void(TodayProcess&)> end;
        const char* line;
    } cases[] = {
        {"Today", quit, "updateData coordinator "},
        {"Accounts.plist", quit, "NSFileCoordinator Accounts "},
        {"Today", terminate, "updateData coordinator "},
        {"Accounts.plist", terminate, "NSFileCoordinator Accounts "},
    };
    for (const auto& row : cases) {
        whileHeld(row.item, [&row] {
            TodayProcess panel;
            EXPECT_TRUE(eventually([&] { return waitsForLock(panel.process()); }));
            row.end(panel);
            EXPECT_TRUE(panel.ends());
            EXPECT_EQ(panel.logged(row.line), 1) << row.item;
        });
    }
}

TEST_F(CommandTest, APanelThatWaitsForItsHostAnswersOtherStarts) {
    startBus({});
    showPanel();
    whileHeld("Today", [this] {
        writeStore({"6"});
        EXPECT_TRUE(eventually([&] { return waitsForLock(panel_->process()); }));
        EXPECT_TRUE(TodayProcess().ends());
        EXPECT_TRUE(shows({})) << "the second start hides the panel";
    });
    EXPECT_TRUE(TodayProcess().ends());
    EXPECT_TRUE(shows({"6"}));
}

}  // namespace
}  // namespace quillet::test
