#include "platform/desktop/DistributedNotificationCenter.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "platform/base/NotificationCenter.h"
#include "platform/desktop/Queues.h"
#include "platform/desktop/SessionBus.h"

namespace quillet::platform {

namespace {

constexpr QLatin1String kSignalPath("/it/tarno/quillet/DistributedNotifications");
constexpr QLatin1String kSignalInterface("it.tarno.quillet.DistributedNotifications");
constexpr QLatin1String kSignalMember("Posted");
constexpr QLatin1String kSignature("ss");  // name, object

// A notification's name and its object.
using Topic = std::pair<std::string, std::string>;

QString textOf(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

// Whether the text fits into a match rule, which is short and, as the toolkit writes it, ASCII.
bool isMatchable(const std::string& text) {
    constexpr std::size_t kLongest = 255;  // bytes
    return text.size() <= kLongest && std::all_of(text.begin(), text.end(), [](char character) {
               return character >= ' ' && character <= '~' && character != '\'' &&
                      character != '\\';
           });
}

// The arguments by which the bus selects signals for the topic; fewer if a rule cannot hold them.
QStringList matchOf(const Topic& topic) {
    if (!isMatchable(topic.first)) {
        return {};
    }
    return isMatchable(topic.second) ? QStringList{textOf(topic.first), textOf(topic.second)}
                                     : QStringList{textOf(topic.first)};
}

// One text for both, to name the topic to the centre inside the process. No text that comes over
// the bus holds a zero byte.
std::string keyOf(const Topic& topic) {
    return topic.first + '\0' + topic.second;
}

}  // namespace

struct DistributedNotificationCenter::State final : public QObject {
    Q_OBJECT

public:
    explicit State(SessionBus& sessionBus) : bus(sessionBus) {
        bus.addObserver(this, [this] {
            std::for_each(
                topics.begin(), topics.end(), [this](const Topic& topic) { subscribe(topic); });
        });
    }
    ~State() override { bus.removeObserver(this); }

    void subscribe(const Topic& topic) {
        // Returns false without a bus, and if this very subscription exists already.
        bus.connection().connect(QString(),
                                 kSignalPath,
                                 kSignalInterface,
                                 kSignalMember,
                                 matchOf(topic),
                                 kSignature,
                                 this,
                                 SLOT(receive(QDBusMessage)));
    }

    SessionBus& bus;
    NotificationCenter handlers;
    std::set<Topic> topics;  // what the bus is asked for

private:
    Q_SLOT void receive(const QDBusMessage& message) {
        const QVariantList arguments = message.arguments();
        if (message.signature() != kSignature || arguments.size() != 2) {
            return;
        }
        Topic topic{arguments[0].toString().toStdString(), arguments[1].toString().toStdString()};
        if (!topics.contains(topic) ||
            std::find(waiting_.begin(), waiting_.end(), topic) != waiting_.end()) {
            return;
        }
        waiting_.push_back(std::move(topic));
        // Whatever else comes from the bus before the queue gets there is received first.
        mainQueue().async([state = QPointer(this)] {
            if (state) {
                state->deliverNext();
            }
        });
    }

    void deliverNext() {
        const Topic topic = std::move(waiting_.front());
        waiting_.erase(waiting_.begin());
        handlers.postNotification(keyOf(topic));
    }

    std::vector<Topic> waiting_;
};

DistributedNotificationCenter& DistributedNotificationCenter::defaultCenter() {
    // Never destroyed: observers with static lifetime may still remove themselves at exit.
    static auto* const center = new DistributedNotificationCenter(SessionBus::shared());
    return *center;
}

DistributedNotificationCenter::DistributedNotificationCenter(SessionBus& bus)
    : state_(std::make_unique<State>(bus)) {}

DistributedNotificationCenter::~DistributedNotificationCenter() = default;

void DistributedNotificationCenter::addObserver(const void* observer,
                                                std::string_view name,
                                                std::string_view object,
                                                Handler handler) {
    Topic topic{name, object};
    state_->handlers.addObserver(
        observer, keyOf(topic), [topic, handler = std::move(handler)](const Notification&) {
            handler(topic.first, topic.second);
        });
    if (state_->topics.insert(topic).second) {
        state_->subscribe(topic);
    }
}

void DistributedNotificationCenter::removeObserver(const void* observer) {
    state_->handlers.removeObserver(observer);
}

bool DistributedNotificationCenter::postNotification(std::string_view name,
                                                     std::string_view object) {
    QDBusMessage signal = QDBusMessage::createSignal(kSignalPath, kSignalInterface, kSignalMember);
    signal << textOf(name) << textOf(object);
    return state_->bus.connection().send(signal) && state_->bus.flush();
}

}  // namespace quillet::platform

#include "DistributedNotificationCenter.moc"
