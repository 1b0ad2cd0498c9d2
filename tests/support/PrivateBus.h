#pragma once

#include <QProcess>
#include <csignal>
#include <memory>
#include <string>

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {

// A private session bus that can be stopped and started, with its own services to start.
class PrivateBus {
public:
    ~PrivateBus() { stop(); }

    const std::string& folder() const { return folder_.path(); }
    std::string address() const { return "unix:path=" + folder_.path("bus"); }

    // Call before start(): the bus will start `command` when a program calls `name`.
    void addService(const std::string& name, const std::string& command) const {
        folder_.writeFile("dbus-1/services/" + name + ".service",
                          "[D-BUS Service]\nName=" + name + "\nExec=" + command + "\n");
    }

    // Call before start(): how long the bus waits for a service that it starts.
    void setStartTime(int milliseconds) {
        mode_ = "--config-file=" +
                folder_.writeFile("bus.conf",
                                  "<busconfig><include>/usr/share/dbus-1/session.conf</include>"
                                  "<limit name='service_start_timeout'>" +
                                      std::to_string(milliseconds) + "</limit></busconfig>");
    }

    bool start() {
        daemon_ = std::make_unique<QProcess>();
        const EnvironmentVariable services("XDG_DATA_HOME", folder_.path());
        daemon_->start(QStringLiteral("dbus-daemon"),
                       {QString::fromStdString(mode_),
                        QStringLiteral("--nofork"),
                        QStringLiteral("--nopidfile"),
                        QStringLiteral("--print-address"),
                        QStringLiteral("--address=") + QString::fromStdString(address())});
        return daemon_->waitForReadyRead();
    }

    void pause() const { ::kill(static_cast<pid_t>(daemon_->processId()), SIGSTOP); }
    void resume() const { ::kill(static_cast<pid_t>(daemon_->processId()), SIGCONT); }
    void stop() {
        if (daemon_) {
            daemon_->kill();
            daemon_->waitForFinished();
        }
    }

private:
    TemporaryFolder folder_;
    std::string mode_ = "--session";
    std::unique_ptr<QProcess> daemon_;
};

}  // namespace quillet::test
