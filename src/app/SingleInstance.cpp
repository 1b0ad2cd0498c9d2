#include "app/SingleInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QThread>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string>
#include <utility>

#include "platform/desktop/SessionBus.h"
#include "platform/extension/Bundle.h"
#include "platform/files/Path.h"

namespace quillet {

using platform::FileLock;
using platform::SessionBus;

namespace {

constexpr int kAnswerTime = 2000;  // milliseconds
// How long a panel may take from its lock to its name, or to the end of its process.
constexpr std::chrono::seconds kPatience{2};
constexpr int kStep = 20;  // milliseconds
const QString kPath = QStringLiteral("/it/tarno/quillet/Today");
const QString kInterface = QStringLiteral("it.tarno.quillet.Today");
// The name of a program that runs without a bundle identifier.
constexpr const char* kDefaultName = "it.tarno.quillet.today";

std::string ownName() {
    return platform::Bundle::main().identifier().value_or(kDefaultName);
}

QString busName() {
    return QString::fromStdString(ownName());
}

// A display is a desktop session; one user may have several, each with a panel.
std::string display() {
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0') {
            return value;
        }
    }
    return "";
}

QString connectionName() {
    return QString::fromStdString(SessionBus::shared().connectionName());
}

// Whether another process has the name and the call to toggle.
bool tellOther() {
    const QDBusConnection bus(connectionName());
    if (!bus.isConnected()) {
        return false;
    }
    const QDBusMessage answer = bus.call(
        QDBusMessage::createMethodCall(busName(), kPath, kInterface, QStringLiteral("Toggle")),
        QDBus::Block,
        kAnswerTime);
    if (answer.type() == QDBusMessage::ReplyMessage) {
        return true;
    }
    // An owner that is too busy to answer still has the call and will follow it, unless it has just
    // gone. Any other error (a name that is no valid bus name) leaves us on our own.
    return QDBusError(answer).type() == QDBusError::NoReply &&
           bus.interface()->isServiceRegistered(busName());
}

}  // namespace

SingleInstance::SingleInstance(std::function<void()> toggle) : toggle_(std::move(toggle)) {}

SingleInstance::~SingleInstance() {
    SessionBus::shared().removeObserver(this);
}

SingleInstance::Claim SingleInstance::claim() {
    for (const QDeadlineTimer patience(kPatience);; QThread::msleep(kStep)) {
        const bool isFirst = takeLock();
        if (isFirst && takeName()) {
            stay();
            return Claim::Alone;
        }
        if (tellOther()) {
            lock_.reset();
            return Claim::Told;
        }
        if (isFirst) {
            takeName();  // whoever had it may have just gone
            stay();
            return Claim::Alone;
        }
        if (connectionName().isEmpty() || patience.hasExpired()) {
            return Claim::Unreachable;
        }
    }
}

bool SingleInstance::isReachable() const {
    return !connection_.isEmpty() && connection_ == connectionName();
}

void SingleInstance::release() {
    lock_.reset();
    QDBusConnection bus(connection_);
    if (bus.isConnected()) {
        QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                                           QStringLiteral("/org/freedesktop/DBus"),
                                                           QStringLiteral("org.freedesktop.DBus"),
                                                           QStringLiteral("ReleaseName"));
        bus.asyncCall(call << busName());  // the end waits for nobody's answer
    }
}

void SingleInstance::Toggle() {
    toggle_();
}

// False where another process has the lock. Where no lock can be made, nobody can tell.
bool SingleInstance::takeLock() {
    const auto folder = FileLock::folder();
    if (lock_ || !folder) {
        return true;
    }
    auto lock = FileLock::tryNow(
        platform::Path::appendingPathComponent(
            folder.value(), FileLock::nameFor(ownName() + " on " + display(), ".panel")),
        FileLock::Access::Exclusive);
    if (!lock) {
        return lock.error().code != EWOULDBLOCK;
    }
    lock_.emplace(std::move(lock.value()));
    return true;
}

bool SingleInstance::takeName() {
    const QString connection = connectionName();
    if (connection.isEmpty()) {
        return false;
    }
    QDBusConnection bus(connection);
    bus.registerObject(kPath, this, QDBusConnection::ExportAllSlots);
    if (!bus.registerService(busName())) {
        return false;
    }
    connection_ = connection;
    return true;
}

void SingleInstance::stay() {
    SessionBus::shared().addObserver(this, [this] { takeName(); });
}

}  // namespace quillet
