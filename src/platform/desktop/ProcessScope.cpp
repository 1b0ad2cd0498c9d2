#include "platform/desktop/ProcessScope.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <algorithm>

#include "platform/base/Ascii.h"
#include "platform/desktop/SessionBus.h"
#include "platform/files/Path.h"

namespace quillet::platform {

namespace {

// What a unit of systemd is made with, "(sv)".
struct UnitProperty {
    QString name;
    QDBusVariant value;
};
using UnitProperties = QList<UnitProperty>;

// Further units, "(sa(sv))", of which there are none.
struct FurtherUnit {
    QString name;
    UnitProperties properties;
};
using FurtherUnits = QList<FurtherUnit>;

QDBusArgument& operator<<(QDBusArgument& argument, const UnitProperty& property) {
    argument.beginStructure();
    argument << property.name << property.value;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, UnitProperty& property) {
    argument.beginStructure();
    argument >> property.name >> property.value;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const FurtherUnit& unit) {
    argument.beginStructure();
    argument << unit.name << unit.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, FurtherUnit& unit) {
    argument.beginStructure();
    argument >> unit.name >> unit.properties;
    argument.endStructure();
    return argument;
}

void registerTypes() {
    static const bool areRegistered = [] {
        qDBusRegisterMetaType<UnitProperty>();
        qDBusRegisterMetaType<UnitProperties>();
        qDBusRegisterMetaType<FurtherUnit>();
        qDBusRegisterMetaType<FurtherUnits>();
        return true;
    }();
    static_cast<void>(areRegistered);
}

// "app-LAUNCHER-PROGRAM-PROCESS.scope", the form that desktops use.
QString scopeName(std::int64_t process, const std::string& program) {
    std::string name = Path::lastPathComponent(program);
    std::replace_if(
        name.begin(), name.end(), [](char each) { return !isAsciiAlphanumeric(each); }, '_');
    return QString::fromStdString("app-quillet-" + name + "-" + std::to_string(process) + ".scope");
}

}  // namespace

void moveIntoScope(std::int64_t process, const std::string& program) {
    QDBusConnection bus = SessionBus::shared().connection();
    if (!bus.isConnected()) {
        return;
    }
    registerTypes();
    QDBusMessage message =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.systemd1"),
                                       QStringLiteral("/org/freedesktop/systemd1"),
                                       QStringLiteral("org.freedesktop.systemd1.Manager"),
                                       QStringLiteral("StartTransientUnit"));
    message.setAutoStartService(false);
    const QList<uint> processes{static_cast<uint>(process)};
    const UnitProperties properties{
        {QStringLiteral("PIDs"), QDBusVariant(QVariant::fromValue(processes))},
        {QStringLiteral("CollectMode"), QDBusVariant(QStringLiteral("inactive-or-failed"))}};
    message << scopeName(process, program) << QStringLiteral("fail")
            << QVariant::fromValue(properties) << QVariant::fromValue(FurtherUnits());
    bus.send(message);
}

}  // namespace quillet::platform
