// Clicks in the panel's window and a host that follows them, each in a process of its own. The bus
// between them starts the host. That is the complete host of docs/commands.md, which host authors
// paste into a file; one test takes quillet-mail-host.

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <algorithm>
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
#include "platform/files/FileManager.h"
#include "tests/support/CoordinatingProcess.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/ProgramRun.h"
#include "tests/widget/StoreFixture.h"

namespace quillet::test {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::string>;
using ::testing::ElementsAre;

// Logged once a read, for a broken file.
constexpr const char* kRead = "updateData error deserialize";
const std::string kHost = "it.tarno.quillet";

template <typename Condition>
bool eventually(Condition condition) {
    return waitUntil(condition, kProgramTime);
}

// The panel of quillet-today in a process of its own, offscreen, in the environment of this one.
class TodayProcess {
public:
    TodayProcess() {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_PLUGIN_PATH", QUILLET_TEST_PLUGINS);
        environment.insert("QT_QPA_GENERIC_PLUGINS", "windowdriver");
        process_.setProcessEnvironment(environment);
        startProgram(process_, "quillet-today");
    }
    // Asks the program to end, and expects status 0.
    ~TodayProcess() {
        process_.terminate();
        EXPECT_TRUE(ends() && process_.exitStatus() == QProcess::NormalExit &&
                    process_.exitCode() == 0)
            << (errors_ + process_.readAllStandardError()).constData();
    }

    // Ends the program as the tray's "Quit" does.
    void quit() { process_.closeWriteChannel(); }
    // Waits for the program to end; returns whether it did.
    bool ends() {
        return process_.state() == QProcess::NotRunning || process_.waitForFinished(kProgramTime);
    }
    pid_t process() const { return static_cast<pid_t>(process_.processId()); }

    // The window driver's answer to one of its commands.
    Json ask(const std::string& command) {
        process_.write((command + "\n").c_str());
        while (!process_.canReadLine() && process_.waitForReadyRead(kProgramTime)) {
        }
        Json answer = Json::parse(process_.readLine().constData(), nullptr, false);
        EXPECT_TRUE(answer.is_object() && !answer.contains("error")) << command << answer;
        return answer;
    }
    // The first text of each row that is shown, from the top. Empty before the panel is up.
    Texts rows() {
        Texts texts;
        for (const std::string name : ask("state").value("rows", Json::array())) {
            texts.push_back(name.substr(0, name.find(", ")));
        }
        return texts;
    }
    int height() { return ask("state").value("height", 0); }  // of the table, points
    // How often the program has logged the text so far.
    std::size_t logged(const char* text) {
        errors_ += process_.readAllStandardError();
        return static_cast<std::size_t>(errors_.count(text));
    }

private:
    QProcess process_;
    QByteArray errors_;
};

class CommandTest : public StoreFixture {
protected:
    CommandTest() {
        writeStore({"1", "2", "3", "4", "5"});
        writeFile("b@x", "broken", "no property list");
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

    // The host of the document under another name.
    static std::string hostNamed(const std::string& name) {
        std::string host = documentExample("commands.md", "python");
        std::string path = "/" + name;
        std::ranges::replace(path, '.', '/');
        for (const auto& [old, other] :
             {std::pair("\"" + kHost + "\"", name), {"\"/it/tarno/quillet\"", path}}) {
            const std::size_t found = host.find(old);
            EXPECT_NE(found, std::string::npos) << old;
            host.replace(found, old.size(), "\"" + other + "\"");
        }
        return host;
    }
    // Starts a bus that starts a host when one of these names is called.
    void startBus(const Texts& hosts = {kHost}) {
        for (const std::string& name : hosts) {
            const std::string script = container.writeFile(name + ".py", hostNamed(name));
            daemon_.addService(name,
                               "/bin/sh -c 'exec /usr/bin/python3 " + script + " " +
                                   container.path("SharedData") + " >> " + container.path(name) +
                                   "'");
        }
        ASSERT_TRUE(daemon_.start());
    }
    // Starts the host before anybody calls it; returns its process.
    static pid_t startHost() {
        platform::SessionBus sessionBus;
        auto* const bus = sessionBus.connection().interface();
        EXPECT_TRUE(bus->startService(kHost.c_str()).isValid());
        return static_cast<pid_t>(bus->servicePid(kHost.c_str()).value());
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
        const platform::FileCoordinator host(container.path("SharedData"));
        EXPECT_FALSE(host.coordinateWriting(container.path("SharedData/" + item),
                                            [&action](const std::string&) { action(); }));
    }

    void showPanel() {
        panel_ = &panels_.emplace_back();
        // The panel reads as it appears and again once it is up. List and height follow one turn
        // of the event loop later each, and every answer takes a turn.
        ASSERT_TRUE(eventually([&] { return panel_->logged(kRead) == 2; }));
        ASSERT_TRUE(shows(read()));
        EXPECT_EQ(panel_->height(), 60 * panel_->rows().size());
    }

    void start(const Texts& hosts = {kHost}) {
        startBus(hosts);
        showPanel();
    }

    // The commands that the host has followed so far: word, message, whether in the background.
    Texts followed(const std::string& name = kHost) const {
        std::ifstream file(container.path(name));
        Texts commands;
        // A last line without its end is still being written.
        for (std::string line; std::getline(file, line) && !file.eof();) {
            commands.push_back(line);
        }
        return commands;
    }
    // Waits for as many commands and expects exactly these.
    void expectFollowed(const Texts& commands, const std::string& name = kHost) const {
        eventually([&] { return followed(name).size() >= commands.size(); });
        EXPECT_EQ(followed(name), commands);
    }
    bool shows(const Texts& identifiers) {
        return eventually([&] { return panel_->rows() == identifiers; });
    }
    bool isHigh(int rows) {
        return eventually([&] { return panel_->height() == 60 * rows; });
    }

    PrivateBus daemon_;
    EnvironmentVariable address_{"DBUS_SESSION_BUS_ADDRESS", daemon_.address()};
    TemporaryFolder config_;
    EnvironmentVariable configVariable_{"XDG_CONFIG_HOME", config_.path()};
    std::list<TodayProcess> panels_;
    TodayProcess* panel_ = nullptr;  // the last one
};

TEST_F(CommandTest, EveryControlReachesAHostThatIsStartedForItAndThePanelFollows) {
    writeStore({"1", "2", "3+3", "4", "5%41"});
    start();
    Texts expected;
    for (const auto& [click, command] : {std::pair("click 2 Archive", "archive 3+3 True"),
                                         {"click 0 Reply", "reply 1 False"},
                                         {"click 1", "open 2 False"},
                                         {"click 3 Delete", "delete 5%41 True"}}) {
        panel_->ask(click);
        expected.emplace_back(command);
        expectFollowed(expected);
    }
    EXPECT_TRUE(isHigh(3));
    EXPECT_THAT(panel_->rows(), ElementsAre("1", "2", "4"));
    EXPECT_THAT(read(), ElementsAre("1", "2", "4"));
}

TEST_F(CommandTest, TheMailHostMovesTheFileOfAMessageWhoseRowLeaves) {
    const TemporaryFolder mail;
    for (const std::string folder : {"INBOX", "Archive", "Trash"}) {
        for (const std::string part : {"/cur", "/new", "/tmp"}) {
            mail.makeFolder(folder + part);
        }
    }
    for (const std::string name : {"1", "2", "3"}) {
        mail.writeFile("INBOX/cur/" + name + ":2,S",
                       "From: " + name + "@x\nDate: 0" + name + " Nov 2020 10:00:00 +0000\n\n");
    }
    std::filesystem::remove_all(container.path("SharedData"));
    const std::string configuration =
        mail.writeFile("mail-host.conf", "[account a@x]\nmaildir = " + mail.path() + "\n");
    daemon_.addService(kHost,
                       "/usr/bin/env XDG_STATE_HOME=" + mail.path("state") +
                           " " QUILLET_BIN "/quillet-mail-host --config " + configuration);
    ASSERT_TRUE(daemon_.start());
    startHost();
    panel_ = &panels_.emplace_back();
    ASSERT_TRUE(shows({"3@x", "2@x", "1@x"}));
    panel_->ask("click 1 Archive");
    EXPECT_TRUE(shows({"3@x", "1@x"}));
    panel_->ask("click 0 Delete");
    EXPECT_TRUE(shows({"1@x"}));
    const auto filesIn = [&](const char* folder) {
        return platform::FileManager::contentsOfFolder(mail.path(folder)).value().size();
    };
    EXPECT_TRUE(eventually([&] { return filesIn("Trash/cur") == 1 && read().size() == 1; }));
    EXPECT_EQ(filesIn("Archive/cur"), 1U);
    EXPECT_EQ(filesIn("INBOX/cur"), 1U);
}

TEST_F(CommandTest, WithoutAHostTheRowLeavesUntilAReadFindsItsMessageAgain) {
    start({});
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
    expectFollowed({"archive 4 True", "reply 1 False"});
    EXPECT_THAT(panel_->rows(), ElementsAre("1", "no url", "3"));
}

TEST_F(CommandTest, AButtonWhoseMessageLeavesUnderThePointerSendsNothing) {
    start();
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
    expectFollowed({"archive 1 True"});
    EXPECT_TRUE(shows({"2", "4"}));
}

TEST_F(CommandTest, AThousandNotificationsMakeFewReadsAndTheRightEnd) {
    start({});
    const std::size_t before = panel_->logged(kRead);
    // The panel's first read of these waits until the host releases its store.
    whileHeld("Today", [this] {
        writeStore({"6", "5"});
        notify(1000);
    });
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
        expectFollowed({"open 1 False"}, host);
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
    expectFollowed({"delete 3 True"});
    EXPECT_TRUE(shows({"1", "2", "4", "5"}) && isHigh(4));
    EXPECT_TRUE(TodayProcess().ends());
    EXPECT_TRUE(shows({})) << "the second start hides the panel";
}

TEST_F(CommandTest, APanelEndsWhenItIsToldToAlsoWhileItsHostHoldsALock) {
    start({});
    panel_->quit();
    EXPECT_TRUE(panel_->ends()) << "with its window shown";
    const auto endsWhileHeld = [this](const char* item, const char* line, bool isSignalled) {
        whileHeld(item, [&] {
            TodayProcess panel;
            EXPECT_TRUE(eventually([&] { return waitsForLock(panel.process()); }));
            isSignalled ? void(kill(panel.process(), SIGTERM)) : panel.quit();
            EXPECT_TRUE(panel.ends());
            EXPECT_EQ(panel.logged(line), 1) << item;
        });
    };
    for (const bool isSignalled : {false, true}) {
        endsWhileHeld("Today", "updateData coordinator ", isSignalled);
        endsWhileHeld("Accounts.plist", "NSFileCoordinator Accounts ", isSignalled);
    }
}

TEST_F(CommandTest, APanelThatWaitsForItsHostAnswersOtherStarts) {
    start({});
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
