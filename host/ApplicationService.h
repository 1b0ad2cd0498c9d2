#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <functional>
#include <string>
#include <vector>

#include "host/WindowActivation.h"

namespace quillet::host {

// What somebody asks of the host.
struct Call {
    std::string name;               // "Open", "Activate", "ActivateAction"; "run": command line
    std::vector<std::string> urls;  // of Open and run
    Activation activation;
    bool isInBackground = false;
    std::string problem;  // why it cannot be followed; empty where it can
};

// The host on the session bus: the interface org.freedesktop.Application at the path that belongs
// to its identifier, which is its name there. Answers at once, whatever the call asks for; what is
// no proper call is handed on with a problem. Main thread only.
class ApplicationService final : public QDBusVirtualObject {
public:
    enum class Claim { First, Later, Refused };

    ApplicationService(QDBusConnection bus,
                       const std::string& identifier,
                       std::function<void(const Call&)> receive);

    // Takes the name. Later: a program has it already. Refused: the bus does not give it, see
    // QDBusConnection::lastError().
    Claim claim();
    // Hands a call to the program that has the name. False where it does not answer in time.
    bool handOver(const Call& call) const;

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    QDBusConnection bus_;
    QString name_;
    QString path_;
    std::function<void(const Call&)> receive_;
};

}  // namespace quillet::host
