#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QProcess>
#include <gtest/gtest.h>
#include <vector>

#include "platform/desktop/DistributedNotificationCenter.h"
#include "platform/desktop/SessionBus.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

using platform::DistributedNotificationCenter;
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
    center_.addObserver(this, "k_today_widget_key", "k_today_widget_object", noting("one"));
    ASSERT_TRUE(center_.postNotification("bus", "is asked by now"));
    QProcess sender;
    sender.start(QStringLiteral(POST_NOTIFICATION),
                 {QStringLiteral("k_today_widget_key"), QStringLiteral("k_today_widget_object")});
    ASSERT_TRUE(sender.waitForFinished());
    EXPECT_EQ(sender.exitCode(), 0);
    expectCalled({"one: k_today_widget_key, k_today_widget_object"});
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
}

TEST_F(DistributedNotificationCenterTest, AnObserverThatWasRemovedIsNotCalledAnyMore) {
    const int other = 0;
    center_.addObserver(this, "name", "a", noting("one"));
    center_.addObserver(&other, "name", "a", [&](const std::string&, const std::string&) {
        called_.emplace_back("other");
        center_.removeObserver(this);
        center_.removeObserver(&other);
    });
    center_.addObserver(this, "name", "a", noting("late"));
    center_.addObserver(&called_, "name", "b", noting("last"));
    EXPECT_TRUE(center_.postNotification("name", "a"));
    EXPECT_TRUE(center_.postNotification("name", "b"));
    expectCalled({"one: name, a", "other", "last: name, b"});
}

TEST_F(DistributedNotificationCenterTest, SignalsOfAnotherShapeAreIgnored) {
    center_.addObserver(this, "name", "object", noting("one"));
    center_.addObserver(this, "it's", "here", noting("one"));
    ASSERT_TRUE(center_.postNotification("bus", "is asked by now"));
    QDBusConnection hostile =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("hostile"));
    const QString name = QStringLiteral("name");
    const QString object = QStringLiteral("object");
    const QVariant variant = QVariant::fromValue(QDBusVariant(object));
    const QVariantList shapes[] = {
        {},
        {name},
        {name, variant},
        {name, object, object},
        {QStringLiteral("it's"), 7},
        {QStringLiteral("it's"), QStringLiteral("here")},
    };
    for (const QVariantList& arguments : shapes) {
        QDBusMessage signal =
            QDBusMessage::createSignal(QStringLiteral("/it/tarno/quillet/DistributedNotifications"),
                                       QStringLiteral("it.tarno.quillet.DistributedNotifications"),
                                       QStringLiteral("Posted"));
        signal.setArguments(arguments);
        EXPECT_TRUE(hostile.send(signal));
    }
    expectCalled({"one: it's, here"});
    QDBusConnection::disconnectFromBus(QStringLiteral("hostile"));
}

TEST_F(DistributedNotificationCenterTest, ObserversAreServedAgainWhenTheBusComesBack) {
    PrivateBus daemon;
    const EnvironmentVariable address("DBUS_SESSION_BUS_ADDRESS", daemon.address());
    SessionBus bus;
    DistributedNotificationCenter center(bus);
    center.addObserver(this, "name", "object", noting("one"));
    EXPECT_FALSE(center.postNotification("name", "object"));
    bool isBack = false;
    bus.addObserver(&isBack, [&] { isBack = true; });
    for (const char* which : {"late bus", "restarted bus"}) {
        SCOPED_TRACE(which);
        called_.clear();
        isBack = false;
        ASSERT_TRUE(daemon.start());
        EXPECT_TRUE(waitUntil([&] { return isBack; }));
        EXPECT_TRUE(center.postNotification("name", "object"));
        expectCalled({"one: name, object"});
        daemon.stop();
    }
    EXPECT_FALSE(center.postNotification("name", "object"));
}

}  // namespace
}  // namespace quillet::test
