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
bool isSettled = false;                             // by this program, not by the user

// Where the session's bus is by convention; empty if no folder for it is known.
QByteArray usualAddress() {
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
    if (folder.isEmpty()) {
        return {};
    }
    const std::unique_ptr<char, decltype(&g_free)> path(
        g_dbus_address_escape_value((folder + "/bus").constData()), &g_free);
    return QByteArrayLiteral("unix:path=") + path.get();
}

// Where the bus listens; empty if that is unknown. Asking the library for "the session bus" instead
// would start one in some sessions, and would keep the first address forever.
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
        connect(&retry_, &QTimer::timeout, this, [this] { connection(); });
    }
    ~State() override { QDBusConnection::disconnectFromBus(name_); }

    // The next call of connection() makes a new one.
    void disconnectNow() {
        retry_.stop();
        connected_ = false;
        QDBusConnection::disconnectFromBus(name_);
    }

    QDBusConnection connection() {
        noticeLoss();
        if (!connected_ && !connectNow() && !retry_.isActive()) {
            retry_.start(delay_);
            delay_ = std::min(2 * delay_, kLongestRetry);
        }
        return QDBusConnection(connected_ ? name_ : QString());
    }

    NotificationCenter observers;

private:
    bool connectNow() {
        const QString address = busAddress();
        if (address.isEmpty()) {
            wasMissing_ = true;
            return false;
        }
        static unsigned attempts = 0;  // makes the names of connections unique
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

    // May be called late, when a connection ends that was replaced already.
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
    // Never destroyed, since services with static lifetime use it. Its connection ends with the
    // application: later messages would reach a library that is being taken down.
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

QDBusConnection SessionBus::connection() {
    return state_->connection();
}

bool SessionBus::flush() {
    // The bus answers in order: once it answers, it has everything else as well. Without a
    // connection the library answers with an error.
    const QDBusMessage answer =
        connection().call(QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
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
