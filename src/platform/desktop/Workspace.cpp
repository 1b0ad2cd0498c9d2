#include "platform/desktop/Workspace.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDeadlineTimer>
#include <QObject>
#include <QStringList>
#include <QThread>
#include <QVariantMap>
#include <algorithm>
#include <list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/desktop/ActivationTokens.h"
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
constexpr int kBusTime = 500;         // milliseconds that the bus has for an answer
constexpr int kAnswerTime = 120'000;  // milliseconds, as long as a bus waits for what it starts
constexpr unsigned long kPollInterval = 5;  // milliseconds

// What is asked of an application.
struct Request {
    QString identifier;
    std::vector<URL> urls;
    bool isBackground = false;
    std::optional<std::string> token;
};

bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           character == '_' || character == '-';
}

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
        } else if (isLetter(character) || (!isStart && character >= '0' && character <= '9')) {
            isStart = false;
        } else {
            return false;
        }
    }
    return hasPoint && !isStart && name.size() <= kLongest;
}

// Where an application of this name has its object, by the rules for desktop entries.
QString objectPathOf(const QString& identifier) {
    QString path = QLatin1Char('/') + identifier;
    path.replace(QLatin1Char('.'), QLatin1Char('/'));
    return path.replace(QLatin1Char('-'), QLatin1Char('_'));
}

// What the bus itself answers; none where it does not in time.
QVariant askBus(const QDBusConnection& bus, const char* member, const QVariantList& arguments) {
    QDBusMessage question =
        QDBusMessage::createMethodCall(kBus, kBusPath, kBus, QLatin1String(member));
    question.setArguments(arguments);
    const QDBusMessage answer = bus.call(question, QDBus::Block, kBusTime);
    return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments().value(0) : QVariant();
}

bool isRunning(const QDBusConnection& bus, const QString& name) {
    return askBus(bus, "NameHasOwner", {name}).toBool();
}

bool isStartable(const QDBusConnection& bus, const QString& name) {
    return askBus(bus, "ListActivatableNames", {}).toStringList().contains(name);
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
        request.identifier, objectPathOf(request.identifier), kInterface, kMember);
    return call << urls << platformData;
}

bool openWithDesktopEntry(const Request& request) {
    return openWithDesktopEntry(request.identifier.toStdString(), request.urls, request.token);
}

// Whether the answer says that no application has taken the call: none could be started, or the one
// that runs does not know it. After any other error it may have been followed.
bool isUntaken(const QDBusError& error) {
    switch (error.type()) {
        case QDBusError::ServiceUnknown:
        case QDBusError::UnknownObject:
        case QDBusError::UnknownInterface:
        case QDBusError::UnknownMethod:
            return true;
        default:
            return error.name().startsWith(QLatin1String("org.freedesktop.DBus.Error.Spawn."));
    }
}

}  // namespace

struct Workspace::State final : public QObject {
public:
    explicit State(SessionBus& sessionBus) : bus(sessionBus) {}

    // False where the bus is missing or knows no such application.
    bool openOverBus(Request request) {
        const auto connection = busConnection();
        if (!connection || !isBusName(request.identifier.toStdString()) ||
            !(isRunning(*connection, request.identifier) ||
              isStartable(*connection, request.identifier))) {
            return false;
        }
        auto* const watcher = new QDBusPendingCallWatcher(
            connection->asyncCall(openCall(request), kAnswerTime), this);
        pending_.emplace_back(watcher, std::move(request));
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this] { settleAnswered(); });
        return true;
    }

    // Whether every request has arrived at its application, or has been answered.
    bool isHandedOver() {
        settleAnswered();
        const auto connection = busConnection();
        return pending_.empty() ||
               (connection && bus.flush() &&
                std::all_of(pending_.begin(), pending_.end(), [&](const Pending& pending) {
                    // The bus gives a name's owner all that waited for it at once.
                    return isRunning(*connection, pending.second.identifier);
                }));
    }

    SessionBus& bus;
    ActivationTokens tokens;

private:
    using Pending = std::pair<QDBusPendingCallWatcher*, Request>;

    std::optional<QDBusConnection> busConnection() {
        const std::string name = bus.connectionName();
        return name.empty() ? std::nullopt
                            : std::optional(QDBusConnection(QString::fromStdString(name)));
    }

    void settleAnswered() {
        pending_.remove_if([](const Pending& pending) {
            const auto& [watcher, request] = pending;
            if (!watcher->isFinished()) {
                return false;
            }
            if (watcher->isError() && isUntaken(watcher->error())) {
                openWithDesktopEntry(request);
            }
            watcher->deleteLater();
            return true;
        });
    }

    std::list<Pending> pending_;  // requests without an answer
};

Workspace& Workspace::sharedWorkspace() {
    static auto* const workspace = new Workspace(SessionBus::shared());
    return *workspace;
}

Workspace::Workspace(SessionBus& bus) : state_(std::make_unique<State>(bus)) {}

Workspace::~Workspace() = default;

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

bool Workspace::flush(std::chrono::milliseconds limit) {
    const QDeadlineTimer deadline(limit);
    while (!state_->isHandedOver()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QThread::msleep(kPollInterval);
    }
    return true;
}

}  // namespace quillet::platform
