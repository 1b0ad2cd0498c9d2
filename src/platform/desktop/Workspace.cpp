#include "platform/desktop/Workspace.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QGuiApplication>
#include <QInputEvent>
#include <QObject>
#include <QStringList>
#include <QSysInfo>
#include <QTimer>
#include <QVariantMap>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <gio/gio.h>
#include <limits>
#include <list>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/base/Log.h"
#include "platform/desktop/ApplicationObject.h"
#include "platform/desktop/DesktopEntry.h"
#include "platform/desktop/SessionBus.h"

namespace quillet::platform {

namespace {

constexpr QLatin1String kApplicationInterface("org.freedesktop.Application");
constexpr QLatin1String kMember("Open");
constexpr QLatin1String kToken("activation-token");        // for Wayland
constexpr QLatin1String kStartupId("desktop-startup-id");  // for X11
constexpr QLatin1String kBus("org.freedesktop.DBus");
constexpr QLatin1String kBusPath("/org/freedesktop/DBus");
constexpr int kBusTime = 250;  // milliseconds to wait for an answer of the bus itself
// Only the bus may give up on an application that does not come up; it then sends an error.
constexpr int kUnlimited = std::numeric_limits<int>::max();
constexpr std::chrono::milliseconds kOften{5};
constexpr std::chrono::milliseconds kSeldom{100};
constexpr std::chrono::seconds kLong{1};  // after this wait the poll interval is kSeldom

// What an application is asked to open.
struct Request {
    QString identifier;
    std::vector<URL> urls;
    bool isBackground = false;
    std::optional<std::string> token;
};

// Makes the tokens with which the program lets another one come to the front. A token holds the
// time of the user's last input, which is watched from construction on: 32 bits of the milliseconds
// of the X server's clock.
class ActivationTokens final : public QObject {
public:
    ActivationTokens() {
        nextTurn_.setSingleShot(true);
        connect(&nextTurn_, &QTimer::timeout, this, [this] { input_ = 0; });
        if (QCoreApplication* application = QCoreApplication::instance()) {
            application->installEventFilter(this);
        }
    }

    // A unique startup identifier of X11, NAME_TIMEmilliseconds. None on Wayland, where the
    // compositor makes the tokens and the toolkit offers no way to ask for one.
    std::optional<std::string> next() {
        if (QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) {
            return std::nullopt;
        }
        return QStringLiteral("quillet-today-%1-%2-%3_TIME%4")
            .arg(QCoreApplication::applicationPid())
            .arg(QSysInfo::machineHostName())
            .arg(++count_)
            .arg(inputTime())
            .toStdString();
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->isInputEvent()) {
            const auto time =
                static_cast<std::uint32_t>(static_cast<QInputEvent*>(event)->timestamp());
            if (time != 0) {  // events that the toolkit synthesizes have no time
                input_ = time;
                nextTurn_.start();
            }
        }
        return QObject::eventFilter(watched, event);
    }

private:
    // The time of the input that is being handled. A screen reader acts without input; the current
    // time serves then, since X servers use the system's monotonic clock.
    std::uint32_t inputTime() const {
        using std::chrono::milliseconds;
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        return input_ != 0 ? input_
                           : static_cast<std::uint32_t>(
                                 std::chrono::duration_cast<milliseconds>(now).count());
    }

    QTimer nextTurn_;          // fires in the next turn of the event loop
    std::uint32_t input_ = 0;  // the time of this turn's input; 0: none
    unsigned count_ = 0;
};

// Whether the text is a valid name on the bus, which disconnects a sender that uses another one.
bool isBusName(const QString& text) {
    const QByteArray name = text.toUtf8();
    return !name.contains('\0') && g_dbus_is_name(name) != FALSE &&
           g_dbus_is_unique_name(name) == FALSE;
}

QDBusMessage busCall(const char* member, const QVariantList& arguments) {
    QDBusMessage call = QDBusMessage::createMethodCall(kBus, kBusPath, kBus, QLatin1String(member));
    call.setArguments(arguments);
    return call;
}

// What the bus itself answers; invalid if it does not answer in time.
QVariant askBus(const QDBusConnection& bus, const QDBusMessage& question) {
    const QDBusMessage answer = bus.call(question, QDBus::Block, kBusTime);
    return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments().value(0) : QVariant();
}

// Returns false if the bus says that no such application runs or can be started. A bus that is slow
// to answer may know it.
bool mayBeReached(const QDBusConnection& bus, const QString& name) {
    const QVariant isRunning = askBus(bus, busCall("NameHasOwner", {name}));
    if (!isRunning.isValid() || isRunning.toBool()) {
        return true;
    }
    const QVariant names = askBus(bus, busCall("ListActivatableNames", {}));
    return !names.isValid() || names.toStringList().contains(name);
}

QDBusMessage openCall(const Request& request) {
    QStringList urls;
    for (const URL& url : request.urls) {
        urls.append(QString::fromStdString(url.absoluteString()));
    }
    QVariantMap platformData;
    if (request.isBackground) {
        platformData.insert(QString::fromStdString(std::string(kBackgroundEntry)), true);
    }
    if (request.token) {
        const QString token = QString::fromStdString(*request.token);
        platformData.insert(kToken, token);
        platformData.insert(kStartupId, token);
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        request.identifier,
        QString::fromStdString(applicationObjectPath(request.identifier.toStdString())),
        kApplicationInterface,
        kMember);
    return call << urls << platformData;
}

bool openWithDesktopEntry(const Request& request) {
    return openWithDesktopEntry(request.identifier.toStdString(), request.urls, request.token);
}

void logLoss(const Request& request) {
    Log::write("Workspace no application took a request %@", {request.identifier.toStdString()});
}

// Whether the answer says that no application has taken the call: none could be started, or the one
// that runs does not know it. After any other error, or when the application has gone, the call may
// have been followed.
bool isUntaken(const QDBusMessage& answer) {
    const QDBusError error(answer);
    switch (error.type()) {
        case QDBusError::NoError:
        case QDBusError::NoReply:
            return false;
        case QDBusError::ServiceUnknown:
        case QDBusError::UnknownObject:
        case QDBusError::UnknownInterface:
        case QDBusError::UnknownMethod:
            return true;
        default:  // from the bus, or from the library for a call that it could not send
            return answer.service() == kBus || answer.service().isEmpty();
    }
}

// Whether somebody has answered. The library makes up answers when a connection ends.
bool isAnswered(const QDBusPendingCall& call) {
    return call.isFinished() && !call.reply().service().isEmpty();
}

}  // namespace

struct Workspace::State final : public QObject {
public:
    explicit State(SessionBus& sessionBus) : bus_(sessionBus) {
        bus_.addObserver(this, [this] { settle(); });
    }
    ~State() override { bus_.removeObserver(this); }

    // The connection that leads to an application; none if the bus is missing or does not know it.
    std::optional<QDBusConnection> connectionTo(const QString& identifier) {
        const QDBusConnection bus = bus_.connection();
        if (!bus.isConnected() || !isBusName(identifier)) {
            return std::nullopt;
        }
        const bool isReachable = mayBeReached(bus, identifier);
        if (bus_.connection().name() != bus.name()) {
            return connectionTo(identifier);  // a lost connection shows only when it is used
        }
        return isReachable ? std::optional(bus) : std::nullopt;
    }

    // Returns false without a connection to the application.
    bool openOverBus(Request request) {
        const auto bus = connectionTo(request.identifier);
        if (bus) {
            pending_.push_back(send(std::move(request), *bus));
        }
        return bus.has_value();
    }

    // Whether every request has arrived at its application, or has been answered.
    bool isHandedOver() {
        settle();
        return std::all_of(pending_.begin(), pending_.end(), [](const Pending& pending) {
            return isAnswered(pending.receipt);
        });
    }

    void logWaiting() const {
        for (const Pending& pending : pending_) {
            if (!isAnswered(pending.receipt)) {
                logLoss(pending.request);
            }
        }
    }

    bool hasLost() const noexcept { return hasLost_; }

    ActivationTokens tokens;

private:
    // A request that is not answered yet.
    struct Pending {
        Request request;
        QString connection;  // on which it was sent
        QDBusPendingCallWatcher* answer;
        // The bus's answer to a question that was sent after the request. It comes once the request
        // no longer waits in the bus: the application has it, or will never get it.
        QDBusPendingCall receipt;
    };

    Pending send(Request request, const QDBusConnection& bus) {
        auto* const answer =
            new QDBusPendingCallWatcher(bus.asyncCall(openCall(request), kUnlimited), this);
        connect(answer, &QDBusPendingCallWatcher::finished, this, [this] { settle(); });
        const QDBusPendingCall receipt = bus.asyncCall(
            busCall("StartServiceByName", {request.identifier, quint32{0}}), kUnlimited);
        return {std::move(request), bus.name(), answer, receipt};
    }

    // Finishes answered requests and sends those again that waited in a bus that is gone, except
    // those that an application had received: it may have followed them.
    void settle() {
        const QDBusConnection bus = bus_.connection();  // may call settle(), so not in the loop
        for (auto next = pending_.begin(); next != pending_.end();) {
            const auto pending = next++;
            const bool isLost = pending->connection != bus.name() && !isAnswered(*pending->answer);
            if (isLost && !isAnswered(pending->receipt)) {
                if (bus.isConnected()) {
                    pending->answer->deleteLater();
                    *pending = send(std::move(pending->request), bus);
                }
            } else if (isLost || pending->answer->isFinished()) {
                if (!isLost) {
                    openElsewhere(*pending);
                }
                pending->answer->deleteLater();
                pending_.erase(pending);
            }
        }
    }

    // Tries the desktop entry if nobody has taken an answered request.
    void openElsewhere(const Pending& pending) {
        if (isUntaken(pending.answer->reply()) && !openWithDesktopEntry(pending.request)) {
            logLoss(pending.request);
            hasLost_ = true;
        }
    }

    SessionBus& bus_;
    std::list<Pending> pending_;
    bool hasLost_ = false;
};

Workspace& Workspace::sharedWorkspace() {
    static auto* const workspace = new Workspace(SessionBus::shared());
    return *workspace;
}

Workspace::Workspace(SessionBus& bus) : state_(std::make_unique<State>(bus)) {}

Workspace::~Workspace() = default;

bool Workspace::knowsApplication(std::string_view identifier) {
    const QString name =
        QString::fromUtf8(identifier.data(), static_cast<qsizetype>(identifier.size()));
    return state_->connectionTo(name).has_value() || hasDesktopEntry(identifier);
}

bool Workspace::openURLs(std::span<const URL> urls,
                         std::string_view identifier,
                         LaunchOptions options) {
    if (urls.empty()) {
        return false;
    }
    const bool isBackground = options == LaunchOptions::WithoutActivation;
    const Request request{
        QString::fromUtf8(identifier.data(), static_cast<qsizetype>(identifier.size())),
        {urls.begin(), urls.end()},
        isBackground,
        isBackground ? std::nullopt : state_->tokens.next()};
    return state_->openOverBus(request) || openWithDesktopEntry(request);
}

bool Workspace::hasLostRequests() const noexcept {
    return state_->hasLost();
}

bool Workspace::flush(std::chrono::milliseconds limit) {
    const auto start = std::chrono::steady_clock::now();
    while (!state_->isHandedOver()) {
        const auto waited = std::chrono::steady_clock::now() - start;
        if (waited >= limit) {
            state_->logWaiting();
            return false;
        }
        std::this_thread::sleep_for(waited < kLong ? kOften : kSeldom);
    }
    return true;
}

}  // namespace quillet::platform
