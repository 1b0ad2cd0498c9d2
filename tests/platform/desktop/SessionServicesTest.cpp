#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QGuiApplication>
#include <QPalette>
#include <filesystem>
#include <gmock/gmock.h>
#include <limits>
#include <optional>
#include <sys/stat.h>

#include "platform/desktop/Appearance.h"
#include "platform/desktop/DistributedNotificationCenter.h"
#include "platform/desktop/FolderWatcher.h"
#include "platform/desktop/SessionBus.h"
#include "platform/desktop/UserDefaults.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

namespace fs = std::filesystem;
using platform::Appearance;
using platform::DistributedNotificationCenter;
using platform::FolderWatcher;
using platform::Look;
using platform::SessionBus;

class DistributedNotificationCenterTest : public testing::Test {
protected:
    DistributedNotificationCenter::Handler noting(const std::string& who) {
        return [this, who](const std::string& name, const std::string& object) {
            called_.push_back(who + ": " + name + ", " + object);
        };
    }

    // Waits for as many calls and expects exactly these.
    void expectCalled(const std::vector<std::string>& calls) {
        waitUntil([&] { return called_.size() >= calls.size(); });
        EXPECT_EQ(called_, calls);
    }

    SessionBus bus_;
    DistributedNotificationCenter center_{bus_};
    std::vector<std::string> called_;
};

TEST_F(DistributedNotificationCenterTest, ANotificationReachesTheObserversOfItsNameAndObject) {
    SessionBus otherBus;
    DistributedNotificationCenter other(otherBus);
    for (const std::string object : {"object", "", "it's 'quoted', \\ and ,", "オブジェクト ✉"}) {
        SCOPED_TRACE(object);
        called_.clear();
        center_.addObserver(this, "name", object, noting("one"));
        center_.addObserver(this, "name", object, noting("two"));
        EXPECT_TRUE(other.postNotification("name", "another object"));
        EXPECT_TRUE(other.postNotification("another name", object));
        EXPECT_TRUE(other.postNotification("name", object));
        expectCalled({"one: name, " + object, "two: name, " + object});
        center_.removeObserver(this);
    }
}

TEST_F(DistributedNotificationCenterTest, IdenticalNotificationsThatWaitAreDeliveredAsOne) {
    center_.addObserver(this, "name", "a", noting("one"));
    center_.addObserver(this, "name", "b", noting("one"));
    for (const char* object : {"a", "b", "a", "a", "b"}) {
        EXPECT_TRUE(center_.postNotification("name", object));
    }
    expectCalled({"one: name, a", "one: name, b"});
    EXPECT_TRUE(center_.postNotification("name", "a"));
    expectCalled({"one: name, a", "one: name, b", "one: name, a"});
    EXPECT_TRUE(center_.postNotification("name", "a"));
    center_.removeObserver(this);  // before that is delivered
    center_.addObserver(&center_, "name", "b", noting("other"));
    EXPECT_TRUE(center_.postNotification("name", "b"));
    expectCalled({"one: name, a", "one: name, b", "one: name, a", "other: name, b"});
}

TEST_F(DistributedNotificationCenterTest, SignalsOfAnotherShapeAreIgnored) {
    center_.addObserver(this, "name", "object", noting("one"));
    center_.addObserver(this, "it's", "here", noting("one"));
    ASSERT_TRUE(center_.postNotification("bus", "is asked by now"));
    QDBusConnection hostile = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "hostile");
    const QVariantList shapes[] = {
        {},
        {"name"},
        {"name", QVariant::fromValue(QDBusVariant("object"))},
        {"name", "object", "object"},
        {"it's", 7},
        {"it's", "here"},
    };
    for (const QVariantList& arguments : shapes) {
        auto signal = QDBusMessage::createSignal("/it/tarno/quillet/DistributedNotifications",
                                                 "it.tarno.quillet.DistributedNotifications",
                                                 "Posted");
        signal.setArguments(arguments);
        EXPECT_TRUE(hostile.send(signal));
    }
    expectCalled({"one: it's, here"});
    QDBusConnection::disconnectFromBus("hostile");
}

TEST_F(DistributedNotificationCenterTest, ObserversAreServedAgainWhenTheBusComesBack) {
    PrivateBus daemon;
    const EnvironmentVariable address("DBUS_SESSION_BUS_ADDRESS", daemon.address());
    center_.addObserver(this, "name", "object", noting("one"));
    EXPECT_FALSE(center_.postNotification("name", "object"));
    bool isBack = false;
    bus_.addObserver(&isBack, [&] { isBack = true; });
    for (const char* which : {"late bus", "restarted bus"}) {
        SCOPED_TRACE(which);
        called_.clear();
        isBack = false;
        ASSERT_TRUE(daemon.start());
        EXPECT_TRUE(waitUntil([&] { return isBack; }));
        EXPECT_TRUE(center_.postNotification("name", "object"));
        expectCalled({"one: name, object"});
        daemon.stop();
    }
    EXPECT_FALSE(center_.postNotification("name", "object"));
}

constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kInterface = "org.freedesktop.portal.Settings";
constexpr const char* kService = "org.freedesktop.portal.Desktop";
const QStringList kLook{"org.freedesktop.appearance", "color-scheme"};
const QStringList kMotion{"org.gnome.desktop.interface", "enable-animations"};

QVariant inVariant(const QVariant& value) {
    return QVariant::fromValue(QDBusVariant(value));
}

// Plays the settings portal on the session bus.
class FakePortal : public QDBusVirtualObject {
public:
    explicit FakePortal(QMap<QStringList, QVariant> settings) : settings_(std::move(settings)) {
        EXPECT_TRUE(bus_.registerVirtualObject(kPath, this) && bus_.registerService(kService));
    }
    ~FakePortal() override { QDBusConnection::disconnectFromBus(bus_.name()); }

    void change(const QStringList& setting, const QVariant& value) {
        auto signal = QDBusMessage::createSignal(kPath, kInterface, "SettingChanged");
        EXPECT_TRUE(bus_.send(signal << setting[0] << setting[1] << inVariant(value)));
    }
    int reads() const { return reads_; }

    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override {
        ++reads_;
        const QStringList setting{call.arguments()[0].toString(), call.arguments()[1].toString()};
        return call.interface() == kInterface && call.member() == "Read" &&
               bus.send(call.createReply(inVariant(inVariant(settings_.value(setting, 0)))));
    }

private:
    QDBusConnection bus_ = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "portal");
    QMap<QStringList, QVariant> settings_;
    int reads_ = 0;
};

class AppearanceTest : public testing::Test {
protected:
    static void usePalette(Qt::GlobalColor colour) {
        QGuiApplication::setPalette(QPalette(QColor(colour)));
    }
    bool shows(Look look, bool reducedMotion, int changes) {
        return waitUntil([&] {
            return appearance_->look() == look && appearance_->reducedMotion() == reducedMotion &&
                   changes_ == changes;
        });
    }
    void start() {
        usePalette(Qt::white);
        appearance_.emplace([this] { ++changes_; });
        EXPECT_EQ(appearance_->look(), Look::Light);  // the portal is not waited for
    }

    int changes_ = 0;
    std::optional<Appearance> appearance_;
};

TEST_F(AppearanceTest, ThePaletteTellsTheLookWhereThereIsNoPortal) {
    start();
    usePalette(Qt::black);
    EXPECT_EQ(changes_, 0);  // not during the call that changes it
    EXPECT_TRUE(shows(Look::Dark, false, 1));
}

TEST_F(AppearanceTest, ThePortalOverrulesThePaletteAndIsFollowed) {
    FakePortal portal({{kLook, 1U}, {kMotion, false}});
    start();
    EXPECT_TRUE(shows(Look::Dark, true, 2));
    portal.change(kLook, 2U);
    EXPECT_TRUE(shows(Look::Light, true, 3));
    usePalette(Qt::black);
    portal.change(kMotion, true);
    EXPECT_TRUE(shows(Look::Light, false, 4));
    portal.change(kLook, 0U);  // no preference
    EXPECT_TRUE(shows(Look::Dark, false, 5));
}

TEST_F(AppearanceTest, SettingsOfAnotherTypeOrNameChangeNothing) {
    FakePortal portal({{kLook, "dark"}});
    start();
    EXPECT_TRUE(waitUntil([&] { return portal.reads() == 2; }));
    portal.change(kLook, true);
    portal.change({"org.example", "color-scheme"}, 1U);
    portal.change(kMotion, false);  // the only valid change
    EXPECT_TRUE(shows(Look::Light, true, 1));
}

class FolderWatcherTest : public testing::Test {
protected:
    FolderWatcher watch(const std::string& folder, int levels) {
        return FolderWatcher({folder_.path(folder)}, levels, [this] { ++count_; });
    }
    void move(const char* from, const char* to) const {
        fs::rename(folder_.path(from), folder_.path(to));
    }
    bool isTold() {
        const bool isTold = waitUntil([this] { return count_ > 0; });
        count_ = 0;
        return isTold;
    }
    // Waits until all changes so far are reported. The two later changes in another folder are
    // reported after them.
    void settle() const {
        int count = 0;
        const FolderWatcher watcher({folder_.makeFolder("settle")}, 0, [&count] { ++count; });
        for (int round = 1; round <= 2; ++round) {
            folder_.writeFile("settle/file", "");
            EXPECT_TRUE(waitUntil([&] { return count == round; }));
        }
    }

    TemporaryFolder folder_;
    int count_ = 0;
};

TEST_F(FolderWatcherTest, EveryKindOfChangeIsTold) {
    folder_.writeFile("store/Today/a@b/old", "");
    folder_.makeFolder("elsewhere/account");
    folder_.writeFile("elsewhere/file", "");
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"file written", [&] { folder_.writeFile("store/Today/a@b/new", "text"); }},
        {"file moved", [&] { move("store/Today/a@b/new", "store/Today/a@b/x"); }},
        {"file moved in", [&] { move("elsewhere/file", "store/Today/a@b/file"); }},
        {"file moved out", [&] { move("store/Today/a@b/file", "elsewhere/file"); }},
        {"file removed", [&] { fs::remove(folder_.path("store/Today/a@b/x")); }},
        {"file in the folder", [&] { folder_.writeFile("store/Accounts.plist", ""); }},
        {"folder made", [&] { folder_.makeFolder("store/Today/c@d"); }},
        {"file in the made folder", [&] { folder_.writeFile("store/Today/c@d/new", ""); }},
        {"folder moved in", [&] { move("elsewhere/account", "store/Today/account"); }},
        {"file in the moved folder", [&] { folder_.writeFile("store/Today/account/new", ""); }},
    };
    const auto watcher = watch("store", 2);
    for (const auto& [name, change] : cases) {
        SCOPED_TRACE(name);
        change();
        ASSERT_TRUE(isTold());
    }
}

TEST_F(FolderWatcherTest, AFolderMayComeGoAndComeBack) {
    const auto watcher = watch("container/data/Today", 1);
    folder_.makeFolder("container/data");
    settle();
    EXPECT_EQ(count_, 0);
    folder_.makeFolder("container/data/Today/a@b");
    EXPECT_TRUE(isTold());
    move("container", "away");
    EXPECT_TRUE(isTold());
    folder_.writeFile("away/data/Today/a@b/2", "");
    settle();
    EXPECT_EQ(count_, 0);
    move("away", "container");
    EXPECT_TRUE(isTold());
    folder_.writeFile("container/data/Today/a@b/3", "");
    EXPECT_TRUE(isTold());
}

TEST_F(FolderWatcherTest, FoldersMayLieOnTheWayToOthers) {
    const std::string inbox = folder_.makeFolder("mail/cur");
    const FolderWatcher watcher(
        {folder_.path("mail"), inbox, folder_.path("mail/a/cur"), folder_.path("mail/b/cur")},
        0,
        [this] { ++count_; });
    for (const char* file : {"mail/new", "mail/cur/1", "mail/b/cur/2", "mail/a/cur/3", "mail/x"}) {
        SCOPED_TRACE(file);
        folder_.writeFile(file, "");
        ASSERT_TRUE(isTold());
    }
}

TEST_F(FolderWatcherTest, ChangesElsewhereAreNotToldAndManyInQuickSuccessionOnce) {
    folder_.makeFolder("store/Today/a@b/deep");
    const auto watcher = watch("store/Today", 1);
    folder_.writeFile("store/other", "");
    folder_.writeFile("store/Today/a@b/deep/file", "");
    settle();
    EXPECT_EQ(count_, 0);
    for (const char* file : {"1", "2", "3"}) {
        folder_.writeFile(std::string("store/Today/") + file, "");
    }
    settle();
    EXPECT_EQ(count_, 1);
}

TEST_F(FolderWatcherTest, AFolderThatCannotBeWatchedIsLoggedOnce) {
    const LogCapture log;
    fs::create_symlink("loop", folder_.path("loop"));
    const auto watcher = watch("loop/store/Today", 0);
    EXPECT_THAT(log.lines(), testing::ElementsAre(testing::StartsWith("FolderWatcher ")));
}

TEST_F(FolderWatcherTest, AWatcherMayBeEndedByTheCall) {
    folder_.makeFolder("store");
    std::optional<FolderWatcher> watcher;
    watcher.emplace(std::vector{folder_.path("store")}, 0, [&] {
        ++count_;
        watcher.reset();
    });
    folder_.writeFile("store/file", "");
    settle();
    folder_.writeFile("store/file", "");
    settle();
    EXPECT_EQ(count_, 1);
}

TEST(UserDefaultsTest, AValueIsKeptAndWhatAnotherProgramWritesIsSeen) {
    auto& defaults = platform::UserDefaults::standard();
    const TemporaryFolder folder;
    const EnvironmentVariable home("XDG_CONFIG_HOME", folder.path("config"));
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(defaults.integerForKey("segmented"), 0);
    defaults.setInteger(kLeast, "segmented");
    EXPECT_EQ(defaults.integerForKey("segmented"), kLeast);
    const std::pair<std::string, std::int64_t> cases[] = {
        {"\"  12 monkeys\"", 12},
        {"@ByteArray(5)", 5},
        {"@Variant(\\0\\0\\0\\xff)", 0},
    };
    for (const auto& [text, expected] : cases) {
        folder.writeFile("config/quillet/today.ini", "[General]\nother=1\nsegmented=" + text);
        EXPECT_EQ(defaults.integerForKey("segmented"), expected) << text;
    }
    defaults.setInteger(2, "segmented");
    EXPECT_EQ(defaults.integerForKey("other"), 1);
}

TEST(UserDefaultsTest, AFileThatCannotBeWrittenLeavesTheValueToThisProcess) {
    auto& defaults = platform::UserDefaults::standard();
    const TemporaryFolder folder;
    const std::string inPlace = folder.makeFolder("fifo/quillet") + "/today.ini";
    const std::string ofLock = folder.makeFolder("fifo lock/quillet") + "/today.ini.lock";
    ASSERT_TRUE(::mkfifo(inPlace.c_str(), 0600) == 0 && ::mkfifo(ofLock.c_str(), 0600) == 0);
    folder.writeFile("file", "");
    for (const char* place : {"file", "fifo", "fifo lock"}) {
        SCOPED_TRACE(place);
        const EnvironmentVariable home("XDG_CONFIG_HOME", folder.path(place));
        EXPECT_EQ(defaults.integerForKey("other"), 0);
        defaults.setInteger(3, "unsaved");
        EXPECT_EQ(defaults.integerForKey("unsaved"), 3);
    }
    const EnvironmentVariable home("XDG_CONFIG_HOME", folder.path("config"));
    defaults.setInteger(4, "unsaved");  // the file can be written again and counts
    folder.writeFile("config/quillet/today.ini", "[General]\nunsaved=15\n");
    EXPECT_EQ(defaults.integerForKey("unsaved"), 15);
}

}  // namespace
}  // namespace quillet::test
