#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QVariantMap>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "platform/desktop/ApplicationObject.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {

// An application on the session bus that records what it is asked to open. It runs in the test's
// process on its own connection.
class RecordingApplication final : public QDBusVirtualObject {
public:
    struct Request {
        std::vector<std::string> urls;
        QVariantMap platformData;
    };

    explicit RecordingApplication(const std::string& identifier)
        : name_(QString::fromStdString(identifier)),
          bus_(QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"),
                                             name_)) {
        const std::string path = platform::applicationObjectPath(identifier);
        EXPECT_TRUE(bus_.registerVirtualObject(QString::fromStdString(path), this) &&
                    bus_.registerService(name_));
    }
    ~RecordingApplication() override { QDBusConnection::disconnectFromBus(name_); }

    const std::vector<Request>& requests() const { return requests_; }
    // Waits until there are as many requests.
    bool gets(std::size_t requests) const {
        return waitUntil([&] { return requests_.size() == requests; });
    }
    // Replies to further requests with this error.
    void failWith(const char* error) { error_ = QLatin1String(error); }

    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        if (message.interface() != QLatin1String("org.freedesktop.Application") ||
            message.member() != QLatin1String("Open") ||
            message.signature() != QLatin1String("asa{sv}")) {
            return false;
        }
        const QVariantList arguments = message.arguments();
        requests_.push_back({{}, qdbus_cast<QVariantMap>(arguments[1].value<QDBusArgument>())});
        for (const QString& url : arguments[0].toStringList()) {
            requests_.back().urls.push_back(url.toStdString());
        }
        return bus.send(error_.isEmpty() ? message.createReply()
                                         : message.createErrorReply(error_, QString()));
    }

private:
    QString name_;
    QDBusConnection bus_;
    QString error_;
    std::vector<Request> requests_;
};

}  // namespace quillet::test
