// The order of mail programs, with programs that write down how they were started.

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <unistd.h>

#include "mailhost/clients/Clients.h"

#include "tests/support/LogCapture.h"
#include "tests/support/OwnContainer.h"
#include "tests/support/WaitUntil.h"

namespace quillet::mailhost {
namespace {

namespace fs = std::filesystem;
using platform::Activation;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

// The desktop of these tests. GIO reads it once in a process.
class Desktop : public ::testing::Environment {
public:
    void SetUp() override {
        addEntry("midviewer", "midviewer %u", "x-scheme-handler/mid");
        addEntry("org.kde.kmail2", "kmail --title %c %u", "x-scheme-handler/mailto");
        addEntry("viewer", "viewer %f", "message/rfc822");
        home_.writeFile("config/mimeapps.list",
                        "[Default Applications]\nx-scheme-handler/mid=midviewer.desktop\n"
                        "x-scheme-handler/mailto=org.kde.kmail2.desktop\n"
                        "message/rfc822=viewer.desktop\n");
        for (const char* program : {"midviewer", "kmail", "viewer", "mine", "quillet-message"}) {
            const std::string file = home_.writeFile(
                std::string("bin/") + program,
                "#!/bin/sh\nname=${0##*/}\nfor word in \"$name\" \"$@\"; do printf '%s|' "
                "\"$word\" >>\"$RECORD\"; done\n"
                "echo \"$XDG_ACTIVATION_TOKEN,$DESKTOP_STARTUP_ID\" >>\"$RECORD\"\n"
                "case \" $FAILING \" in *\" $name \"*) exit 3;; esac\n");
            fs::permissions(file, fs::perms::owner_all);
        }
        ::setenv("XDG_DATA_HOME", home_.path("data").c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", home_.path("config").c_str(), 1);
        ::setenv("PATH", (home_.path("bin") + ":/usr/bin:/bin").c_str(), 1);
        ::setenv("XDG_ACTIVATION_TOKEN", "the host's own", 1);
    }

private:
    void addEntry(const std::string& name, const std::string& command, const std::string& type) {
        home_.writeFile("data/applications/" + name + ".desktop",
                        "[Desktop Entry]\nType=Application\nName=A B\nExec=" + command +
                            "\nMimeType=" + type + ";\n");
    }

    test::TemporaryFolder home_;
};
const auto* const kDesktop = ::testing::AddGlobalTestEnvironment(new Desktop);

enum class Task { Show, ShowOddId, Reply, Compose, ComposeWithFile, ComposeBehind };

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order of the table
struct OrderRow {
    const char* name;
    Task task;
    const char* open;
    const char* failing;
    bool hasDrafts;
    const char* record;   // a regular expression; "M" is the message
    const char* outcome;  // client or "stored" or "failed"
};

// NOLINTNEXTLINE(bugprone-exception-escape): a table of a test
const OrderRow kRows[] = {
    {"the handler of mid",
     Task::Show,
     "auto",
     "",
     true,
     "midviewer\\|mid:1@x\\|t,i\n",
     "midviewer"},
    {"the known handler of mailto is next",
     Task::Show,
     "auto",
     "midviewer",
     true,
     "midviewer.*\nkmail\\|--title\\|A B\\|--view\\|M\\|t,i\n",
     "org.kde.kmail2"},
    {"the handler of the file is next",
     Task::Show,
     "auto",
     "midviewer kmail",
     true,
     "midviewer.*\nkmail.*\nviewer\\|M\\|t,i\n",
     "viewer"},
    {"the own window is last",
     Task::Show,
     "auto",
     "midviewer kmail viewer",
     true,
     "midviewer.*\nkmail.*\nviewer.*\nquillet-message\\|M\\|t,i\n",
     "quillet-message"},
    {"nothing starts",
     Task::Show,
     "auto",
     "midviewer kmail viewer quillet-message",
     true,
     ".*quillet-message.*\n",
     "failed"},
    {"an odd Message-ID goes by the file",
     Task::ShowOddId,
     "auto",
     "kmail",
     true,
     "kmail\\|.*\nviewer\\|M\\|t,i\n",
     "viewer"},
    {"the configured command",
     Task::Show,
     "mine -x '{file}'",
     "",
     true,
     "mine\\|-x\\|M\\|t,i\n",
     "mine"},
    {"a configured program that is not there",
     Task::Show,
     "thunderbird",
     "",
     true,
     "midviewer\\|mid:1@x\\|t,i\n",
     "midviewer"},
    {"a reply",
     Task::Reply,
     "mine {file}",
     "",
     true,
     "kmail\\|--title\\|A B\\|mailto:a@x\\?subject=Re%3A%20&in-reply-to=%3C1%40x%3E&references="
     "%3C1%40x%3E\\|t,i\n",
     "org.kde.kmail2"},
    {"a reply where nobody replies",
     Task::Reply,
     "auto",
     "kmail",
     true,
     "kmail.*\nmidviewer.*\n",
     "midviewer"},
    {"a draft",
     Task::Compose,
     "auto",
     "",
     true,
     "kmail\\|--title\\|A B\\|mailto:b@x\\?subject=s&body=t\\|t,i\n",
     "org.kde.kmail2"},
    {"a draft with a file",
     Task::ComposeWithFile,
     "auto",
     "",
     true,
     "kmail\\|--title\\|A B\\|--attach\\|.*/drafts/draft-[^/]*/f.txt\\|mailto:b@x\\?.*\\|t,i\n",
     "org.kde.kmail2"},
    {"a draft that nobody takes",
     Task::ComposeWithFile,
     "auto",
     "kmail",
     true,
     "kmail.*\n",
     "stored"},
    {"a draft that nobody takes, without Drafts",
     Task::ComposeWithFile,
     "auto",
     "kmail",
     false,
     "kmail.*\nquillet-message\\|--draft\\|.*/draft.eml\\|t,i\n",
     "quillet-message"},
    {"a draft in the background", Task::ComposeBehind, "auto", "", true, "", "stored"},
    {"a draft in the background, without Drafts",
     Task::ComposeBehind,
     "auto",
     "",
     false,
     "",
     "failed"},
};

class OrderTest : public ::testing::TestWithParam<OrderRow> {
protected:
    void perform(Clients& clients, const Clients::Done& done) {
        const Task task = GetParam().task;
        const std::string id = task == Task::ShowOddId ? "1\"@x" : "1@x";
        const MailFile message{
            home_.writeFile("box/cur/1:2,", "From: a@x\nMessage-ID: <" + id + ">\n\n"),
            home_.path("box")};
        const Activation activation{"t", "i"};
        if (task == Task::Show || task == Task::ShowOddId) {
            clients.show(message, activation, done);
        } else if (task == Task::Reply) {
            clients.reply(message, activation, done);
        } else {
            compose(clients, activation, done);
        }
    }
    void compose(Clients& clients, const Activation& activation, const Clients::Done& done) {
        const auto draft = ExtensionMessage::init();
        draft->setToString("b@x;");
        draft->setSubject("s");
        draft->setPlainBody("t");
        if (GetParam().task == Task::ComposeWithFile) {
            draft->appendAttachments(
                {own_.container.writeFile("Share/f.txt", "x"), "/etc/hostname"});
        }
        const auto drafts = GetParam().hasDrafts
                                ? std::optional(home_.makeFolder("Drafts/cur") + "/..")
                                : std::nullopt;
        clients.compose(
            *draft,
            drafts,
            GetParam().task == Task::ComposeBehind ? std::nullopt : std::optional(activation),
            done);
    }

    test::OwnContainer own_;
    test::TemporaryFolder home_;
    test::EnvironmentVariable record_{"RECORD", home_.writeFile("record", "")};
    test::EnvironmentVariable failing_{"FAILING", GetParam().failing};
};

TEST_P(OrderTest, TheFirstProgramThatStartsTakesIt) {
    const test::LogCapture log;
    Clients clients({own_.container.path(), home_.path("cache/drafts"), "/nonexistent"},
                    Clients::systemStart());
    clients.setOpen(GetParam().open);
    std::optional<ClientOutcome> outcome;
    perform(clients, [&outcome](const ClientOutcome& result) { outcome = result; });
    ASSERT_TRUE(test::waitUntil([&outcome] { return outcome.has_value(); }, 30'000));
    std::string record;
    std::getline(std::ifstream(home_.path("record")), record, '\0');
    for (std::size_t at = record.find(home_.path("box")); at != std::string::npos;
         at = record.find(home_.path("box"))) {
        record.replace(at, home_.path("box/cur/1:2,").size(), "M");
    }
    EXPECT_THAT(record, MatchesRegex(GetParam().record));
    const std::string stored = outcome->storedAt.empty() ? "failed" : "stored";
    EXPECT_EQ(outcome->isShown ? outcome->client : stored, GetParam().outcome);
    EXPECT_EQ(outcome->reason.empty(), stored == "stored" || outcome->isShown);
    EXPECT_EQ(fs::exists(outcome->storedAt), stored == "stored");
    EXPECT_EQ(outcome->leftOut.size(), GetParam().task == Task::ComposeWithFile ? 1U : 0U);
}

INSTANTIATE_TEST_SUITE_P(Rows, OrderTest, ::testing::ValuesIn(kRows), [](const auto& row) {
    std::string name = row.param.name;
    std::replace_if(
        name.begin(), name.end(), [](char each) { return std::isalnum(each) == 0; }, '_');
    return name;
});

// Stands for the manager of the session.
class Manager : public QDBusVirtualObject {
public:
    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*bus*/) override {
        calls += message.member().toStdString() + " " + message.signature().toStdString() + " " +
                 message.arguments().value(0).toString().toStdString();
        return true;
    }
    std::string calls;
};

TEST(ProcessStartTest, AProgramRunsInASessionAndAScopeOfItsOwnAndItsStartIsReported) {
    QDBusConnection bus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("manager"));
    Manager manager;
    ASSERT_TRUE(bus.registerVirtualObject(QStringLiteral("/org/freedesktop/systemd1"), &manager));
    ASSERT_TRUE(bus.registerService(QStringLiteral("org.freedesktop.systemd1")));
    const test::TemporaryFolder home;
    const test::EnvironmentVariable out("OUT", home.path("out"));
    struct StartRow {
        Command command;
        std::optional<std::string> failure;
    };
    const std::string missing = home.path("missing");
    const StartRow rows[] = {
        {{"sh", "-c", "exit 4"}, "it ended with status 4"},
        {{"sh", "-c", "kill -9 $$"}, "it was ended by signal 9"},
        {{missing}, missing + ": No such file or directory"},
        {{"sh", "-c", "cat; cut -d' ' -f6 /proc/$$/stat >$OUT; env | grep -c ACTIVATION >>$OUT"},
         "it ended with status 1"},
        {{"sleep", "1000"}, std::nullopt},
    };
    for (const StartRow& row : rows) {
        SCOPED_TRACE(row.command.back());
        std::optional<std::optional<std::string>> report;
        const auto handle = platform::startProcess(
            row.command, {}, std::chrono::seconds(row.failure ? 60 : 1), [&](const auto& failure) {
                report = failure;
            });
        ASSERT_TRUE(test::waitUntil([&report] { return report.has_value(); }, 30'000));
        EXPECT_EQ(*report, row.failure);
    }
    std::string text;
    std::getline(std::ifstream(home.path("out")), text, '\0');
    EXPECT_THAT(text, MatchesRegex("[0-9]+\n0\n"));
    EXPECT_NE(std::stoi(text), ::getsid(0));
    ASSERT_TRUE(test::waitUntil(
        [&] { return manager.calls.find("app-quillet-sleep-") != std::string::npos; }));
    EXPECT_THAT(manager.calls, HasSubstr("StartTransientUnit ssa(sv)a(sa(sv)) app-quillet-sh-"));
    const std::string name = manager.calls.substr(manager.calls.find("app-quillet-sleep-") + 18);
    EXPECT_EQ(::kill(std::stoi(name), SIGKILL), 0);
}

}  // namespace
}  // namespace quillet::mailhost
