#include "app/SingleInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <utility>

#include "platform/desktop/Queues.h"
#include "platform/foundation/Bundle.h"

namespace quillet {

namespace {

constexpr int kAnswerTime = 2000;  // milliseconds
const QString kPath = QStringLiteral("/it/tarno/quillet/Today");
const QString kInterface = QStringLiteral("it.tarno.quillet.Today");
// The name of a program that runs without a bundle identifier.
constexpr const char* kDefaultName = "it.tarno.quillet.today";

QString busName() {
    const auto identifier = platform::Bundle::main().identifier();
    return QString::fromStdString(identifier.value_or(kDefaultName));
}

}  // namespace

SingleInstance::SingleInstance(std::function<void()> toggle) : toggle_(std::move(toggle)) {}

SingleInstance::Role SingleInstance::claim() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return Role::Unknown;
    }
    bus.registerObject(kPath, this, QDBusConnection::ExportAllSlots);
    if (bus.registerService(busName())) {
        return Role::First;
    }
    const QDBusMessage call =
        QDBusMessage::createMethodCall(busName(), kPath, kInterface, QStringLiteral("Toggle"));
    const QDBusMessage answer = bus.call(call, QDBus::Block, kAnswerTime);
    // An owner that is too busy to answer still has the call and will follow it. Any other error
    // (a name that is no valid bus name, an owner just gone) leaves us on our own.
    const bool told = answer.type() == QDBusMessage::ReplyMessage ||
                      QDBusError(answer).type() == QDBusError::NoReply;
    return told ? Role::Later : Role::Unknown;
}

void SingleInstance::release() {
    QDBusConnection::sessionBus().unregisterService(busName());
}

void SingleInstance::Toggle() {
    platform::mainQueue().async(toggle_);  // the answer goes out before anything that takes long
}

}  // namespace quillet
