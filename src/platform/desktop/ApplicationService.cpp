#include "platform/desktop/ApplicationService.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/desktop/ApplicationObject.h"
#include "platform/desktop/SessionBus.h"
#include "platform/desktop/Workspace.h"

namespace quillet::platform {

namespace {

constexpr QLatin1String kServedInterface("org.freedesktop.Application");
constexpr QLatin1String kTokenEntry("activation-token");
constexpr QLatin1String kStartupIdEntry("desktop-startup-id");
constexpr int kAnswerTime = 5000;  // milliseconds

struct Method {
    QLatin1String name;
    QLatin1String signature;
};

constexpr Method kMethods[] = {
    {QLatin1String("Activate"), QLatin1String("a{sv}")},
    {QLatin1String("Open"), QLatin1String("asa{sv}")},
    {QLatin1String("ActivateAction"), QLatin1String("sava{sv}")},
};

// Reads the entries that say whether to come to the front; those of other types say nothing.
void readPlatformData(const QVariant& argument, ApplicationCall& call) {
    const auto data = qdbus_cast<QVariantMap>(argument);
    const auto textOf = [&data](QLatin1String key) {
        const QVariant value = data.value(key);
        return value.typeId() == QMetaType::QString ? value.toString().toStdString()
                                                    : std::string();
    };
    call.activation = {textOf(kTokenEntry), textOf(kStartupIdEntry)};
    const QVariant background = data.value(QLatin1String(kBackgroundEntry.data()));
    call.isInBackground = background.typeId() == QMetaType::Bool && background.toBool();
}

QVariantMap platformDataOf(const ApplicationCall& call) {
    QVariantMap data;
    if (!call.activation.token.empty()) {
        data.insert(kTokenEntry, QString::fromStdString(call.activation.token));
    }
    if (!call.activation.startupId.empty()) {
        data.insert(kStartupIdEntry, QString::fromStdString(call.activation.startupId));
    }
    return data;
}

// A call with the arguments that its method takes, which stand in the message.
ApplicationCall readCall(const QDBusMessage& message) {
    ApplicationCall call;
    call.name = message.member().toStdString();
    const QVariantList arguments = message.arguments();
    readPlatformData(arguments.last(), call);
    if (call.name == "Open") {
        for (const QString& url : arguments.first().toStringList()) {
            call.urls.push_back(url.toStdString());
        }
    } else if (call.name == "ActivateAction") {
        call.problem = "there is no action " + arguments.first().toString().toStdString();
    }
    return call;
}

ApplicationCall improperCall(const QDBusMessage& message) {
    ApplicationCall call;
    call.name = message.member().toStdString();
    call.problem = "its arguments are of other types: " + message.signature().toStdString();
    return call;
}

}  // namespace

class ApplicationService::State final : public QDBusVirtualObject {
public:
    State(QDBusConnection bus,
          const std::string& identifier,
          std::function<void(const ApplicationCall&)> receive)
        : bus_(std::move(bus)),
          name_(QString::fromStdString(identifier)),
          path_(QString::fromStdString(applicationObjectPath(identifier))),
          receive_(std::move(receive)) {}

    Claim claim();
    std::string lastError() const { return bus_.lastError().message().toStdString(); }
    bool handOver(const ApplicationCall& call) const;

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    QDBusConnection bus_;
    QString name_;
    QString path_;
    std::function<void(const ApplicationCall&)> receive_;
};

ApplicationService::Claim ApplicationService::State::claim() {
    // The object first: calls may come as soon as the name is there.
    if (!bus_.registerVirtualObject(path_, this)) {
        return Claim::Refused;
    }
    const auto answer = bus_.interface()->registerService(name_);
    if (!answer.isValid()) {
        return Claim::Refused;
    }
    return answer.value() == QDBusConnectionInterface::ServiceRegistered ? Claim::First
                                                                         : Claim::Later;
}

bool ApplicationService::State::handOver(const ApplicationCall& call) const {
    const bool isOpen = !call.urls.empty();
    auto message = QDBusMessage::createMethodCall(
        name_,
        path_,
        kServedInterface,
        isOpen ? QStringLiteral("Open") : QStringLiteral("Activate"));
    if (isOpen) {
        QStringList urls;
        for (const std::string& url : call.urls) {
            urls.append(QString::fromStdString(url));
        }
        message << urls;
    }
    message << platformDataOf(call);
    return bus_.call(message, QDBus::Block, kAnswerTime).type() == QDBusMessage::ReplyMessage;
}

QString ApplicationService::State::introspect(const QString& /*path*/) const {
    return QStringLiteral(
        R"(<interface name="org.freedesktop.Application">
  <method name="Activate"><arg type="a{sv}" name="platform_data" direction="in"/></method>
  <method name="Open">
    <arg type="as" name="uris" direction="in"/>
    <arg type="a{sv}" name="platform_data" direction="in"/>
  </method>
  <method name="ActivateAction">
    <arg type="s" name="action_name" direction="in"/>
    <arg type="av" name="parameter" direction="in"/>
    <arg type="a{sv}" name="platform_data" direction="in"/>
  </method>
</interface>
)");
}

bool ApplicationService::State::handleMessage(const QDBusMessage& message,
                                              const QDBusConnection& connection) {
    const QString interface = message.interface();
    if (!interface.isEmpty() && interface != kServedInterface) {
        return false;
    }
    const auto* method =
        std::find_if(std::begin(kMethods), std::end(kMethods), [&message](const Method& each) {
            return each.name == message.member();
        });
    if (method == std::end(kMethods)) {
        return false;
    }
    const bool isProper = method->signature == message.signature();
    if (message.isReplyRequired()) {
        connection.send(
            isProper ? message.createReply()
                     : message.createErrorReply(
                           QDBusError::InvalidArgs,
                           QStringLiteral("%1 takes %2").arg(method->name, method->signature)));
    }
    receive_(isProper ? readCall(message) : improperCall(message));
    return true;
}

ApplicationService::ApplicationService(SessionBus& bus,
                                       const std::string& identifier,
                                       std::function<void(const ApplicationCall&)> receive)
    : state_(std::make_unique<State>(bus.connection(), identifier, std::move(receive))) {}

ApplicationService::~ApplicationService() = default;

ApplicationService::Claim ApplicationService::claim() {
    return state_->claim();
}

std::string ApplicationService::lastError() const {
    return state_->lastError();
}

bool ApplicationService::handOver(const ApplicationCall& call) const {
    return state_->handOver(call);
}

}  // namespace quillet::platform
