#include "platform/desktop/Workspace.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QObject>
#include <QStringList>
#include <QVariantMap>
#include <algorithm>
#include <chrono>
#include <limits>
#include <list>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/base/Ascii.h"
#include "platform/base/Log.h"
#include "platform/desktop/ActivationTokens.h"
#include "platform/desktop/ApplicationObject.h"
#include "platform/desktop/DesktopEntry.h"
#include "platform/desktop/SessionBus.h"

namespace quillet::platform {

namespace {

constexpr QLatin1String kInterface("org.freedesktop.Application");
constexpr QLatin1String kMember("Open");
constexpr QLatin1String kToken("activation-token");        // for Wayland
constexpr QLatin1String kStartupId("desktop-startup-id");  // for X11
constexpr QLatin1String kBus("org.freedesktop.DBus");
constexpr QLatin1String kBusPath("/org/freedesktop/DBus");
constexpr int kBusTime = 250;  // milliseconds that the interface waits for the bus's answer
// The bus gives up on an application that does not come up, and says so; nobody else may.
constexpr int kUnlimited = std::numeric_limits<int>::max();
constexpr std::chrono::milliseconds kOften{5};
constexpr std::chrono::milliseconds kSeldom{100};
constexpr std::chrono::seconds kLong{1};  // a wait from which on it is looked seldom

// What is asked of an application.
struct Request {
    QString identifier;
    std::vector<URL> urls;
    bool isBackground = false;
    std::optional<std::string> token;
};

// Whether the bus could know the name. It cuts off a sender that uses one it cannot know.
bool isBusName(std::string_view name) {
    constexpr std::size_t kLongest = 255;
    bool isStart = true;  // of an element
    bool hasPoint = false;
    for (const char character : name) {
        if (character == '.') {
            if (isStart) {
                return false;
            }
            hasPoint = true;
            isStart = true;
        } else if (isAsciiLetter(character) || character == '_' || character == '-' ||
                   (!isStart && isAsciiDigit(character))) {
            isStart = false;
        } else {
            return false;
        }
    }
    return hasPoint && !isStart && name.size() <= kLongest;
}

QDBusMessage busCall(const char* member, const QVariantList& arguments) {
    QDBusMessage call = QDBusMessage::createMethodCall(kBus, kBusPath, kBus, QLatin1String(member));
    call.setArguments(arguments);
    return call;
}

// What the bus itself answers; none where it does not in time.
QVariant askBus(const QDBusConnection& bus, const QDBusMessage& question) {
    const QDBusMessage answer = bus.call(question, QDBus::Block, kBusTime);
    return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments().value(0) : QVariant();
}

// False where the bus says that no such application runs or could be started. A bus that is slow to
// answer may know it.
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
        kInterface,
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
// that runs does not know it. After any other error, and where the one that had it is gone, it may
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
        default:  // of the bus, or of the library for a call that it could not send
            return answer.service() == kBus || answer.service().isEmpty();
    }
}

// Whether somebody has answered; the library makes up answers for calls whose connection has ended.
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
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    // The connection that leads to an application; "" where the bus is missing or knows none such.
    QString connectionTo(const QString& identifier) {
        QString connection = connectionName();
        if (connection.isEmpty() || !isBusName(identifier.toStdString())) {
            return {};
        }
        const bool isReachable = mayBeReached(QDBusConnection(connection), identifier);
        if (connectionName() != connection) {
            return connectionTo(identifier);  // an end shows when the bus is spoken to
        }
        return isReachable ? connection : QString();
    }

    // False where there is no connection to the application.
    bool openOverBus(Request request) {
        const QString connection = connectionTo(request.identifier);
        if (connection.isEmpty()) {
            return false;
        }
        pending_.push_back(send(std::move(request), connection));
        return true;
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
    // A request without an answer.
    struct Pending {
        Request request;
        QString connection;  // on which it was sent
        QDBusPendingCallWatcher* answer;
        // The bus's answer to a question that was sent after the request. It comes once the request
        // waits no longer: the application has it, or will never have it.
        QDBusPendingCall receipt;
    };

    QString connectionName() { return QString::fromStdString(bus_.connectionName()); }

    Pending send(Request request, const QString& connection) {
        const QDBusConnection bus(connection);
        auto* const answer =
            new QDBusPendingCallWatcher(bus.asyncCall(openCall(request), kUnlimited), this);
        connect(answer, &QDBusPendingCallWatcher::finished, this, [this] { settle(); });
        const QDBusPendingCall receipt = bus.asyncCall(
            busCall("StartServiceByName", {request.identifier, quint32{0}}), kUnlimited);
        return {std::move(request), connection, answer, receipt};
    }

    // Deals with what is answered, and sends again what waited in a bus that is gone. What an
    // application had by then may have been followed.
    void settle() {
        const QString connection = connectionName();  // may come back here, so before the loop
        for (auto next = pending_.begin(); next != pending_.end();) {
            const auto pending = next++;
            const bool isLost = pending->connection != connection && !isAnswered(*pending->answer);
            if (isLost && !isAnswered(pending->receipt)) {
                if (!connection.isEmpty()) {
                    pending->answer->deleteLater();
                    *pending = send(std::move(pending->request), connection);
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

    // Where nobody has taken an answered request.
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
    return !state_->connectionTo(name).isEmpty() || hasDesktopEntry(identifier);
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
