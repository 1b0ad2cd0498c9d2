#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <gmock/gmock.h>
#include <optional>
#include <string>
#include <vector>

#include "mailhost/host/Notices.h"

#include "platform/desktop/SessionBus.h"
#include "tests/support/WaitUntil.h"

namespace quillet::mailhost {
namespace {

using std::chrono::seconds;
using test::waitUntil;
using testing::ElementsAre;

constexpr const char* kService = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";

// Plays the notification service on the session bus.
class FakeService final : public QDBusVirtualObject {
public:
    explicit FakeService(QStringList capabilities) : capabilities_(std::move(capabilities)) {
        EXPECT_TRUE(bus_.registerVirtualObject(kPath, this) && bus_.registerService(kService));
    }
    ~FakeService() override { QDBusConnection::disconnectFromBus(bus_.name()); }

    // Each call as "NUMBER SUMMARY|BODY|ACTIONS", or "NUMBER closed".
    std::vector<std::string> calls;
    bool gets(std::size_t count) const {
        return waitUntil([&] { return calls.size() >= count; }) && calls.size() == count;
    }
    void invoke(uint number, const QString& key) {
        emitSignal("ActivationToken", {number, "token"});
        emitSignal("ActionInvoked", {number, key});
    }
    void emitSignal(const char* member, const QVariantList& arguments) {
        auto signal = QDBusMessage::createSignal(kPath, kService, member);
        signal.setArguments(arguments);
        EXPECT_TRUE(bus_.send(signal));
    }

    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override {
        const QVariantList given = call.arguments();
        if (call.member() == "GetCapabilities") {
            return bus.send(call.createReply(capabilities_));
        }
        uint number = given[0].toUInt();
        if (call.member() == "Notify") {
            EXPECT_EQ(call.signature(), "susssasa{sv}i");
            number = given[1].toUInt() != 0 ? given[1].toUInt() : ++last_;
            const QStringList texts{
                given[3].toString(), given[4].toString(), given[5].toStringList().join(',')};
            calls.push_back(std::to_string(number) + " " + texts.join('|').toStdString());
        } else {
            calls.push_back(std::to_string(number) + " closed");
        }
        return bus.send(call.createReply(number));
    }

private:
    QDBusConnection bus_ = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "notices");
    QStringList capabilities_;
    uint last_ = 0;
};

Outcome failed(const std::string& reason) {
    return Outcome::of(Outcome::Kind::Failed, reason);
}

class NoticesTest : public testing::Test {
protected:
    void SetUp() override { notices_.configure(true, true); }

    void archive(UndoList::Burst burst, const std::string& subject, const char* word = "archive") {
        Outcome outcome = Outcome::of(Outcome::Kind::Moved);
        outcome.burst = burst;
        tell(word, outcome, subject);
    }
    void tell(const char* word, const Outcome& outcome, const std::string& subject = {}) {
        HostCommand command;
        command.word = word;
        notices_.tell(command, outcome, subject, now_);
    }
    void read(const std::vector<MessageRow>& rows) {
        const PublishedList inbox{"INBOX", StandardFolder::Inbox, rows};
        notices_.read({{"a+b@c", "", {inbox}}}, true, 1000);
    }
    bool wasAsked(const std::vector<std::string>& asked) {
        return waitUntil([&] { return asked_.size() >= asked.size(); }) && asked_ == asked;
    }

    platform::SessionBus bus_;
    std::vector<std::string> asked_;
    Notices::Clock::time_point now_{seconds(1000)};
    Notices notices_{bus_,
                     {[this](UndoList::Burst burst) { asked_.push_back(std::to_string(burst)); },
                      [this](const std::string& url, const std::string& token) {
                          asked_.push_back(url + " " + token);
                      }}};
    std::optional<FakeService> service_;
};

TEST_F(NoticesTest, ABurstHasOneNoticeThatUndoesAllOfIt) {
    service_.emplace(QStringList{"actions", "body-markup"});
    archive(7, "<b>Tom</b> & \"Jerry\"\n");
    archive(7, "two");  // before the service has answered
    EXPECT_TRUE(waitUntil([&] {
        return !service_->calls.empty() && service_->calls.back().ends_with("two|undo,Undo");
    }));
    archive(7, "", "delete");
    EXPECT_TRUE(waitUntil([&] { return service_->calls.back().ends_with("subject|undo,Undo"); }));
    archive(8, "other");
    EXPECT_TRUE(waitUntil([&] { return service_->calls.back().starts_with("2 "); }));
    const std::string first = "&lt;b&gt;Tom&lt;/b&gt; &amp; &quot;Jerry&quot;\n\n";
    const std::vector<std::string> last(service_->calls.end() - 2, service_->calls.end());
    EXPECT_THAT(last,
                ElementsAre("1 Messages archived: 2, Message deleted|" + first +
                                "two\nNo subject|undo,Undo",
                            "2 Message archived|other|undo,Undo"));
    service_->emitSignal("ActionInvoked", {"1", "undo"});
    service_->invoke(3, "undo");
    service_->invoke(1, "default");
    service_->emitSignal("NotificationClosed", {2U, 2U});
    service_->invoke(2, "undo");
    archive(9, "");
    archive(9, "closed meanwhile");
    EXPECT_TRUE(waitUntil([&] { return service_->calls.back().starts_with("3 Messages"); }));
    service_->invoke(3, "undo");
    service_->invoke(3, "undo");
    EXPECT_TRUE(wasAsked({"9"}));
}

TEST_F(NoticesTest, AServiceMayLackActionsBeLateOrStartAgain) {
    archive(1, "nobody sees this");
    bus_.flush();
    QCoreApplication::processEvents();
    service_.emplace(QStringList{"body"});
    // What is told before the bus has said that there is no service is lost.
    waitUntil([&] {
        archive(1, "<i>");
        return waitUntil([&] { return !service_->calls.empty(); }, 100);
    });
    ASSERT_FALSE(service_->calls.empty());
    EXPECT_THAT(service_->calls.back(),
                testing::MatchesRegex("1 Messages archived: [0-9]+\\|nobody sees this(\n<i>)+\\|"));
    service_.reset();
    service_.emplace(QStringList{"actions"});
    waitUntil([&] {
        archive(2, "new");
        return waitUntil([&] { return !service_->calls.empty(); }, 100);
    });
    service_->invoke(2, "undo");  // of another program
    service_->invoke(1, "undo");
    EXPECT_TRUE(wasAsked({"2"}));
}

TEST_F(NoticesTest, TroubleAndNewMailHaveOneNoticeEachAsFarAsTheyAreWanted) {
    service_.emplace(QStringList{"actions"});
    tell("archive", failed("Write archive = FOLDER"));
    tell("open", failed("not a move"));
    ASSERT_TRUE(service_->gets(1));
    tell("delete", failed("Write trash = FOLDER"));
    now_ += seconds(3);
    ASSERT_TRUE(service_->gets(2));
    tell("delete", failed("again"));
    ASSERT_TRUE(service_->gets(3));
    notices_.tellAfterChangeFailed("a@b", "it ended with status 1");
    notices_.tellUndone({{"a@b", std::string("file")}, {"a@b", platform::Error{"", 1, "gone"}}});
    ASSERT_TRUE(service_->gets(5));
    read({});
    read({{"", "q1", "Subject", "Anna", 999, true}});
    ASSERT_TRUE(service_->gets(6));
    const MessageRow second{"", "q2", "", "", 1000, true};
    read({second, {"", "q1", "Subject", "Anna", 999, true}});
    ASSERT_TRUE(service_->gets(7));
    service_->invoke(4, "default");
    EXPECT_TRUE(wasAsked({"quillet://open?mail=a%2Bb%40c&messageid=q2&folderstandardid=1 token"}));
    MessageRow third{"", "q3", "Read elsewhere", "Bo", 1000, true};
    read({third, second});
    ASSERT_TRUE(service_->gets(9));
    third.isUnread = false;
    read({third, second});
    ASSERT_TRUE(service_->gets(10));
    EXPECT_THAT(service_->calls,
                ElementsAre("1 Message not moved|Write archive = FOLDER|",
                            "1 Messages not moved: 2|Write trash = FOLDER|",
                            "1 Message not moved|again|",
                            "2 The command after changes failed|a@b: it ended with status 1\n"
                            "Your mail is safe on this computer.|",
                            "3 Messages not brought back: 1|gone|",
                            "4 Anna|Subject|default,Open",
                            "4 New messages: 2|No Name: No subject\nAnna: Subject|default,Open",
                            "4 closed",
                            "5 Bo|Read elsewhere|default,Open",
                            "5 closed"));
    notices_.tellDraft("", 0);
    notices_.tellDraft("/m/Drafts", 2);
    notices_.tellDraft("", 1);
    ASSERT_TRUE(service_->gets(12));
    EXPECT_EQ(service_->calls[10], "6 Draft saved|/m/Drafts\nFiles left out: 2|");
    EXPECT_EQ(service_->calls[11], "6 Files left out: 1||");
    notices_.configure(false, false);
    notices_.tellDraft("/m/Drafts", 2);
    archive(3, "");
    tell("delete", failed(""));
    notices_.tellAfterChangeFailed("a@b", "");
    read({{"", "q4", "", "", 1000, true}});
    notices_.configure(false, true);
    read({{"", "q5", "wanted", "Cy", 1000, true}});
    ASSERT_TRUE(service_->gets(13));
    EXPECT_EQ(service_->calls.back(), "7 Cy|wanted|default,Open");
}

}  // namespace
}  // namespace quillet::mailhost
