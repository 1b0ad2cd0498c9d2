#pragma once

#include <QProcess>
#include <memory>
#include <string>

#include "tests/support/TemporaryFolder.h"

namespace quillet::test {

// A session bus of its own that can be stopped and started, and that starts services of its own.
class PrivateBus {
public:
    PrivateBus() = default;
    ~PrivateBus() { stop(); }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    std::string address() const { return "unix:path=" + folder_.path("bus"); }

    // Before the start: lets the bus start `command` for whoever calls `name`.
    void addService(const std::string& name, const std::string& command) const {
        folder_.writeFile("dbus-1/services/" + name + ".service",
                          "[D-BUS Service]\nName=" + name + "\nExec=" + command + "\n");
    }

    bool start() {
        daemon_ = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_DATA_HOME"), QString::fromStdString(folder_.path()));
        daemon_->setProcessEnvironment(environment);
        daemon_->start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--session"),
                        QStringLiteral("--nofork"),
                        QStringLiteral("--nopidfile"),
                        QStringLiteral("--print-address"),
                        QStringLiteral("--address=") + QString::fromStdString(address())});
        return daemon_->waitForReadyRead();
    }

    void stop() {
        if (daemon_) {
            daemon_->kill();
            daemon_->waitForFinished();
        }
    }

private:
    TemporaryFolder folder_;
    std::unique_ptr<QProcess> daemon_;
};

}  // namespace quillet::test
