#include "app/SingleInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QThread>
#include <cerrno>
#include <chrono>
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
// How long another panel may take to get its name after its lock, or to end.
constexpr std::chrono::seconds kPatience{2};
constexpr int kStep = 20;  // milliseconds
const QString kPath = QStringLiteral("/it/tarno/quillet/Today");
const QString kInterface = QStringLiteral("it.tarno.quillet.Today");
// The name if the program has no bundle identifier.
constexpr const char* kDefaultName = "it.tarno.quillet.today";

std::string ownName() {
    return platform::Bundle::main().identifier().value_or(kDefaultName);
}

QString busName() {
    return QString::fromStdString(ownName());
}

// Each display is a desktop session with a panel of its own. A user may have several.
std::string display() {
    const QByteArray x11 = qgetenv("DISPLAY");
    return (x11.isEmpty() ? qgetenv("WAYLAND_DISPLAY") : x11).toStdString();
}

// Whether another process has the name and received the call to toggle.
bool tellOther() {
    const QDBusConnection bus = SessionBus::shared().connection();
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
    // An owner that is too busy to answer will follow the call later, unless it has just gone.
    // After any other error (such as a name that is not valid on the bus) there is nobody to tell.
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
            takeName();  // its owner may have just gone
            stay();
            return Claim::Alone;
        }
        if (!SessionBus::shared().connection().isConnected() || patience.hasExpired()) {
            return Claim::Unreachable;
        }
    }
}

bool SingleInstance::isReachable() const {
    return !connection_.isEmpty() && connection_ == SessionBus::shared().connection().name();
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

// Returns false if another process has the lock. If no lock can be made, nothing is known about
// other processes.
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
    QDBusConnection bus = SessionBus::shared().connection();
    bus.registerObject(kPath, this, QDBusConnection::ExportAllSlots);
    if (!bus.registerService(busName())) {
        return false;
    }
    connection_ = bus.name();
    return true;
}

void SingleInstance::stay() {
    SessionBus::shared().addObserver(this, [this] { takeName(); });
}

}  // namespace quillet
