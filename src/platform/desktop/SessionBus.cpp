#include "platform/desktop/SessionBus.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <gio/gio.h>
#include <memory>

#include "platform/base/NotificationCenter.h"

namespace quillet::platform {

namespace {

constexpr std::chrono::milliseconds kFirstRetry{500};
constexpr std::chrono::milliseconds kLongestRetry{30'000};
constexpr int kFlushTimeout = 2000;  // milliseconds
constexpr std::string_view kConnected = "connected";

constexpr const char* kAddressVariable = "DBUS_SESSION_BUS_ADDRESS";
constexpr QByteArrayView kNoAddress = "disabled:";  // as other programs write it
bool isSettled = false;                             // by us, not by the user

// Where the session's bus is by convention; empty where there is no folder for it.
QByteArray usualAddress() {
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
    if (folder.isEmpty()) {
        return {};
    }
    const std::unique_ptr<char, decltype(&g_free)> path(
        g_dbus_address_escape_value((folder + "/bus").constData()), &g_free);
    return QByteArrayLiteral("unix:path=") + path.get();
}

// Where the bus listens; empty where nothing tells. Asking the library for "the session bus"
// instead would start one in some sessions, and keep the first address for ever.
QString busAddress() {
    const QByteArray given = qgetenv(kAddressVariable);
    return QString::fromLocal8Bit(given.isEmpty() ? usualAddress() : given);
}

}  // namespace

class SessionBus::State final : public QObject {
    Q_OBJECT

public:
    State() {
        retry_.setSingleShot(true);
        connect(&retry_, &QTimer::timeout, this, [this] { connectionName(); });
    }
    ~State() override { QDBusConnection::disconnectFromBus(name_); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    // Whoever asks for the connection makes a new one.
    void disconnectNow() {
        retry_.stop();
        connected_ = false;
        QDBusConnection::disconnectFromBus(name_);
    }

    QString connectionName() {
        noticeLoss();
        if (!connected_ && !connectNow() && !retry_.isActive()) {
            retry_.start(delay_);
            delay_ = std::min(2 * delay_, kLongestRetry);
        }
        return connected_ ? name_ : QString();
    }

    NotificationCenter observers;

private:
    bool connectNow() {
        const QString address = busAddress();
        if (address.isEmpty()) {
            wasMissing_ = true;
            return false;
        }
        static unsigned attempts = 0;  // each connection has a name of its own
        QDBusConnection::disconnectFromBus(name_);
        name_ = QStringLiteral("quillet-%1").arg(++attempts);
        QDBusConnection bus = QDBusConnection::connectToBus(address, name_);
        connected_ = bus.isConnected() && bus.connect(QString(),
                                                      QStringLiteral("/org/freedesktop/DBus/Local"),
                                                      QStringLiteral("org.freedesktop.DBus.Local"),
                                                      QStringLiteral("Disconnected"),
                                                      this,
                                                      SLOT(noticeLoss()));
        if (!connected_) {
            wasMissing_ = true;
            return false;
        }
        retry_.stop();
        delay_ = kFirstRetry;
        if (std::exchange(wasMissing_, false)) {
            observers.postNotification(kConnected);
        }
        return true;
    }

    // May be called late, by the end of a connection that was replaced already.
    Q_SLOT void noticeLoss() {
        if (!connected_ || QDBusConnection(name_).isConnected()) {
            return;
        }
        connected_ = false;
        wasMissing_ = true;
        retry_.start(delay_);
    }

    QTimer retry_;
    std::chrono::milliseconds delay_ = kFirstRetry;
    QString name_;
    bool connected_ = false;
    bool wasMissing_ = false;
};

SessionBus& SessionBus::shared() {
    // Never destroyed: services with static lifetime lean on it. But its connection ends with the
    // application: what comes from the bus later would be read by a library that is being taken
    // down.
    static auto* const bus = [] {
        qAddPostRoutine([] { shared().state_->disconnectNow(); });
        return new SessionBus;
    }();
    return *bus;
}

void SessionBus::settleAddress() {
    if (qEnvironmentVariableIsEmpty(kAddressVariable)) {
        const QByteArray usual = usualAddress();
        isSettled = qputenv(kAddressVariable, usual.isEmpty() ? kNoAddress.toByteArray() : usual);
    }
}

bool SessionBus::isAddressSettled() {
    return isSettled;
}

SessionBus::SessionBus() : state_(std::make_unique<State>()) {}

SessionBus::~SessionBus() = default;

std::string SessionBus::connectionName() {
    return state_->connectionName().toStdString();
}

bool SessionBus::flush() {
    const QString name = state_->connectionName();
    if (name.isEmpty()) {
        return false;
    }
    // The bus answers in order: with its answer it has everything else as well.
    const QDBusMessage answer = QDBusConnection(name).call(
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                       QStringLiteral("/org/freedesktop/DBus"),
                                       QStringLiteral("org.freedesktop.DBus"),
                                       QStringLiteral("GetId")),
        QDBus::Block,
        kFlushTimeout);
    return answer.type() == QDBusMessage::ReplyMessage;
}

void SessionBus::addObserver(const void* observer, std::function<void()> connected) {
    state_->observers.addObserver(
        observer, kConnected, [connected = std::move(connected)](const Notification&) {
            connected();
        });
}

void SessionBus::removeObserver(const void* observer) {
    state_->observers.removeObserver(observer);
}

}  // namespace quillet::platform

#include "SessionBus.moc"
