#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QGuiApplication>
#include <QPalette>
#include <QProcess>
#include <gtest/gtest.h>
#include <optional>
#include <vector>

#include "platform/desktop/Appearance.h"
#include "platform/desktop/DistributedNotificationCenter.h"
#include "platform/desktop/SessionBus.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

using platform::Appearance;
using platform::DistributedNotificationCenter;
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

TEST_F(DistributedNotificationCenterTest, TheLastWordsOfAProgramThatEndsAtOnceArrive) {
    center_.addObserver(this, "name", "object", noting("one"));
    ASSERT_TRUE(center_.postNotification("bus", "is asked by now"));
    EXPECT_EQ(QProcess::execute(SEND_ONCE, {"post", "name", "object"}), 0);
    expectCalled({"one: name, object"});
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

}  // namespace
}  // namespace quillet::test
