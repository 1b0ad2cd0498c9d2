#pragma once

#include <QProcess>
#include <csignal>
#include <string>

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
    // Call before start(): how long the bus waits for a service that it starts, in milliseconds.
    void setStartTime(const std::string& time) {
        mode_ = "--config-file=" +
                folder_.writeFile("bus.conf",
                                  "<busconfig><include>/usr/share/dbus-1/session.conf</include>"
                                  "<limit name='service_start_timeout'>" +
                                      time + "</limit></busconfig>");
    }

    bool start() {
        const std::string command = "XDG_DATA_HOME=" + folder() + " exec dbus-daemon " + mode_ +
                                    " --nofork --nopidfile --print-address --address=" + address();
        daemon_.start(QStringLiteral("sh"),
                      {QStringLiteral("-c"), QString::fromStdString(command)});
        return daemon_.waitForReadyRead();
    }
    void signal(int signal) const { ::kill(static_cast<pid_t>(daemon_.processId()), signal); }
    void stop() {
        daemon_.kill();
        daemon_.waitForFinished();
    }

private:
    TemporaryFolder folder_;
    std::string mode_ = "--session";
    QProcess daemon_;
};

}  // namespace quillet::test
