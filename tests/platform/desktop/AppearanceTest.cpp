#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QMap>
#include <QObject>
#include <QPalette>
#include <gtest/gtest.h>
#include <optional>

#include "platform/desktop/Appearance.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

using platform::Appearance;
using platform::Look;

constexpr QLatin1String kPath("/org/freedesktop/portal/desktop");
constexpr QLatin1String kInterface("org.freedesktop.portal.Settings");
constexpr QLatin1String kService("org.freedesktop.portal.Desktop");
const QString kLook = QStringLiteral("org.freedesktop.appearance color-scheme");
const QString kMotion = QStringLiteral("org.gnome.desktop.interface enable-animations");

QVariant inVariant(const QVariant& value) {
    return QVariant::fromValue(QDBusVariant(value));
}

}  // namespace

// Plays the settings portal on the session bus.
class FakePortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    explicit FakePortal(QMap<QString, QVariant> settings) : settings_(std::move(settings)) {
        EXPECT_TRUE(bus_.registerObject(kPath, this, QDBusConnection::ExportAllSlots));
        EXPECT_TRUE(bus_.registerService(kService));
    }
    ~FakePortal() override {
        bus_.unregisterService(kService);
        QDBusConnection::disconnectFromBus(bus_.name());
    }

    void change(const QString& setting, const QVariant& value) {
        settings_[setting] = value;
        QDBusMessage signal =
            QDBusMessage::createSignal(kPath, kInterface, QStringLiteral("SettingChanged"));
        signal << setting.section(QLatin1Char(' '), 0, 0) << setting.section(QLatin1Char(' '), 1)
               << inVariant(value);
        EXPECT_TRUE(bus_.send(signal));
    }
    int reads() const { return reads_; }

    Q_SLOT QDBusVariant Read(const QString& space, const QString& key) {
        ++reads_;
        return QDBusVariant(inVariant(settings_.value(space + QLatin1Char(' ') + key, 0)));
    }

private:
    QDBusConnection bus_ =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"));
    QMap<QString, QVariant> settings_;
    int reads_ = 0;
};

namespace {

class AppearanceTest : public testing::Test {
protected:
    ~AppearanceTest() override { QGuiApplication::setPalette(QPalette()); }

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
    EXPECT_FALSE(appearance_->reducedMotion());
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
    FakePortal portal({{kLook, QStringLiteral("dark")}});
    start();
    EXPECT_TRUE(waitUntil([&] { return portal.reads() == 2; }));
    portal.change(kLook, true);
    portal.change(QStringLiteral("org.example color-scheme"), 1U);
    portal.change(kMotion, false);  // the only valid change
    EXPECT_TRUE(shows(Look::Light, true, 1));
}

}  // namespace
}  // namespace quillet::test

#include "AppearanceTest.moc"
