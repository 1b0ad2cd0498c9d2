#include "platform/desktop/Notifications.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QStringList>
#include <QVariantMap>
#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include "platform/desktop/SessionBus.h"

namespace quillet::platform {

namespace {

constexpr QLatin1String kNoticeService("org.freedesktop.Notifications");
constexpr QLatin1String kNoticePath("/org/freedesktop/Notifications");
constexpr int kUsualTime = -1;  // how long a notice is shown: the service's choice

QDBusMessage callOf(const char* member) {
    return QDBusMessage::createMethodCall(
        kNoticeService, kNoticePath, kNoticeService, QLatin1String(member));
}

}  // namespace

class Notifications::State final : public QObject {
    Q_OBJECT

public:
    State(SessionBus& bus, Sender sender, Invoked invoked, Closed closed)
        : bus_(bus),
          sender_(std::move(sender)),
          invoked_(std::move(invoked)),
          closed_(std::move(closed)) {
        watcher_.addWatchedService(kNoticeService);
        watcher_.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
        connect(&watcher_,
                &QDBusServiceWatcher::serviceOwnerChanged,
                this,
                [this](const QString& /*service*/, const QString& before) { forget(before); });
        bus_.addObserver(this, [this] {
            subscribe();
            forgetAll();
        });
        subscribe();
    }
    ~State() override { bus_.removeObserver(this); }

    Id notify(Notice notice, Id replaces) {
        const auto found = shown_.find(replaces);
        const bool isShown = found != shown_.end() && !found->second.isToClose;
        const Id id = isShown ? replaces : ++lastId_;
        shown_[id].next = std::move(notice);
        sendNext(id);
        return id;
    }

    void close(Id id) {
        const auto found = shown_.find(id);
        if (found == shown_.end()) {
            return;
        }
        if (found->second.isWaiting) {
            found->second.isToClose = true;
            return;
        }
        if (found->second.number != 0) {
            closeNumber(found->second.number);
        }
        shown_.erase(found);
    }

private:
    struct Shown {
        std::optional<Notice> next;  // has still to be sent
        uint number = 0;             // the service's; 0 until it answers
        QString owner;               // the service that gave the number
        bool isWaiting = false;      // for the service's answer
        bool isToClose = false;
        std::string token;
    };
    struct Capabilities {
        bool actions = false;
        bool markup = false;
    };

    void subscribe() {
        QDBusConnection connection = bus_.connection();
        watcher_.setConnection(connection);
        const auto connectTo = [&](const char* member, const char* slot) {
            connection.connect(
                kNoticeService, kNoticePath, kNoticeService, QLatin1String(member), this, slot);
        };
        connectTo("ActionInvoked", SLOT(actionInvoked(QDBusMessage)));
        connectTo("ActivationToken", SLOT(tokenCame(QDBusMessage)));
        connectTo("NotificationClosed", SLOT(notificationClosed(QDBusMessage)));
    }

    // Calls `answered` with the answer, which may be an error, unless the bus was lost since.
    template <typename Answered>
    void call(const QDBusMessage& message, Answered answered) {
        auto* const watcher =
            new QDBusPendingCallWatcher(bus_.connection().asyncCall(message), this);
        connect(watcher,
                &QDBusPendingCallWatcher::finished,
                this,
                [this, watcher, answered, losses = losses_] {
                    watcher->deleteLater();
                    if (losses == losses_) {
                        answered(watcher->reply());
                    }
                });
    }

    void askCapabilities() {
        isAsking_ = true;
        call(callOf("GetCapabilities"), [this](const QDBusMessage& answer) {
            isAsking_ = false;
            if (answer.signature() != QLatin1String("as")) {
                forgetAll();
                return;
            }
            const QStringList names = answer.arguments().constFirst().toStringList();
            capabilities_ = {names.contains(QLatin1String("actions")),
                             names.contains(QLatin1String("body-markup"))};
            for (const auto& entry : shown_) {
                sendNext(entry.first);
            }
        });
    }

    void sendNext(Id id) {
        Shown& shown = shown_.at(id);
        if (shown.isWaiting || !shown.next) {
            return;
        }
        if (!capabilities_) {
            if (!isAsking_) {
                askCapabilities();
            }
            return;
        }
        shown.isWaiting = true;
        call(messageOf(*std::exchange(shown.next, std::nullopt), shown.number),
             [this, id](const QDBusMessage& answer) { answered(id, answer); });
    }

    QDBusMessage messageOf(const Notice& notice, uint replaces) const {
        const QString body = QString::fromStdString(notice.body);
        QStringList actions;
        if (capabilities_->actions) {
            for (const Action& action : notice.actions) {
                actions << QString::fromStdString(action.key)
                        << QString::fromStdString(action.label);
            }
        }
        QVariantMap hints;
        hints[QStringLiteral("desktop-entry")] = QString::fromStdString(sender_.desktopEntry);
        if (!notice.category.empty()) {
            hints[QStringLiteral("category")] = QString::fromStdString(notice.category);
        }
        return callOf("Notify") << QString::fromStdString(sender_.name) << replaces
                                << QString::fromStdString(sender_.icon)
                                << QString::fromStdString(notice.summary)
                                << (capabilities_->markup ? body.toHtmlEscaped() : body) << actions
                                << hints << kUsualTime;
    }

    void answered(Id id, const QDBusMessage& answer) {
        Shown& shown = shown_.at(id);
        shown.isWaiting = false;
        if (answer.signature() != QLatin1String("u")) {
            const bool isTold = !shown.isToClose;
            shown_.erase(id);
            if (isTold) {
                closed_(id);
            }
            return;
        }
        shown.number = answer.arguments().constFirst().toUInt();
        shown.owner = answer.service();
        if (shown.isToClose) {
            closeNumber(shown.number);
            shown_.erase(id);
            return;
        }
        sendNext(id);
    }

    void closeNumber(uint number) { bus_.connection().send(callOf("CloseNotification") << number); }

    // A service is gone, and another one counts anew. What it has not answered goes to the next
    // one, or comes back as an error.
    void forget(const QString& owner) {
        if (owner.isEmpty()) {
            return;
        }
        capabilities_.reset();
        std::vector<Id> gone;
        for (auto& [id, shown] : shown_) {
            if (shown.isWaiting) {
                shown.number = 0;
            } else if (shown.owner == owner) {
                gone.push_back(id);
            }
        }
        for (const Id id : gone) {
            shown_.erase(id);
            closed_(id);
        }
    }

    void forgetAll() {
        ++losses_;
        capabilities_.reset();
        isAsking_ = false;
        for (const auto& [id, shown] : std::exchange(shown_, {})) {
            if (!shown.isToClose) {
                closed_(id);
            }
        }
    }

    // Signals of the service may go to all programs, so most numbers are of others.
    std::map<Id, Shown>::iterator find(const QDBusMessage& signal, QLatin1String signature) {
        if (signal.signature() != signature) {
            return shown_.end();
        }
        const uint number = signal.arguments().constFirst().toUInt();
        return std::find_if(shown_.begin(), shown_.end(), [&](const auto& entry) {
            return number != 0 && entry.second.number == number &&
                   entry.second.owner == signal.service();
        });
    }

    Q_SLOT void tokenCame(const QDBusMessage& signal) {
        const auto found = find(signal, QLatin1String("us"));
        if (found != shown_.end()) {
            found->second.token = signal.arguments().at(1).toString().toStdString();
        }
    }

    Q_SLOT void actionInvoked(const QDBusMessage& signal) {
        const auto found = find(signal, QLatin1String("us"));
        if (found != shown_.end()) {
            const std::string token = std::exchange(found->second.token, {});
            invoked_(found->first, signal.arguments().at(1).toString().toStdString(), token);
        }
    }

    Q_SLOT void notificationClosed(const QDBusMessage& signal) {
        const auto found = find(signal, QLatin1String("uu"));
        if (found == shown_.end()) {
            return;
        }
        if (found->second.isWaiting) {
            found->second.number = 0;  // closed just before its successor came
            return;
        }
        const Id id = found->first;
        shown_.erase(found);
        closed_(id);
    }

    SessionBus& bus_;
    Sender sender_;
    Invoked invoked_;
    Closed closed_;
    QDBusServiceWatcher watcher_;
    std::map<Id, Shown> shown_;
    Id lastId_ = 0;
    std::optional<Capabilities> capabilities_;
    bool isAsking_ = false;
    unsigned losses_ = 0;
};

Notifications::Notifications(SessionBus& bus, Sender sender, Invoked invoked, Closed closed)
    : state_(
          std::make_unique<State>(bus, std::move(sender), std::move(invoked), std::move(closed))) {}

Notifications::~Notifications() = default;

Notifications::Id Notifications::notify(Notice notice, Id replaces) {
    return state_->notify(std::move(notice), replaces);
}

void Notifications::close(Id notice) {
    state_->close(notice);
}

}  // namespace quillet::platform

#include "Notifications.moc"
