#include "platform/desktop/ProcessStart.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <string_view>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "platform/base/Result.h"
#include "platform/desktop/ApplicationService.h"
#include "platform/desktop/ProcessScope.h"
#include "platform/desktop/Queues.h"
#include "platform/desktop/SessionBus.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::platform {

namespace {

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts) {
        pointers.push_back(const_cast<char*>(text.c_str()));  // the interface never writes to them
    }
    pointers.push_back(nullptr);
    return pointers;
}

// The environment of this program, with the activation in place of its own.
std::vector<std::string> environmentFor(const Activation& activation) {
    constexpr std::array<std::string_view, 2> kActivation{"XDG_ACTIVATION_TOKEN=",
                                                          "DESKTOP_STARTUP_ID="};
    constexpr std::string_view kBus = "DBUS_SESSION_BUS_ADDRESS=";
    std::vector<std::string> variables;
    for (char* const* each = environ; *each != nullptr; ++each) {
        const std::string_view variable = *each;
        const bool isOwn = variable.starts_with(kActivation[0]) ||
                           variable.starts_with(kActivation[1]) ||
                           (variable.starts_with(kBus) && SessionBus::isAddressSettled());
        if (!isOwn) {
            variables.emplace_back(variable);
        }
    }
    if (activation.isGiven()) {
        const bool hasToken = !activation.token.empty();
        const bool hasId = !activation.startupId.empty();
        variables.push_back(std::string(kActivation[0]) +
                            (hasToken ? activation.token : activation.startupId));
        variables.push_back(std::string(kActivation[1]) +
                            (hasId ? activation.startupId : activation.token));
    }
    return variables;
}

Result<pid_t> spawn(const std::vector<std::string>& command, const Activation& activation) {
    const std::vector<std::string> environment = environmentFor(activation);
    posix_spawn_file_actions_t actions{};
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
    posix_spawnattr_t attributes{};
    ::posix_spawnattr_init(&attributes);
    sigset_t ignoredHere{};
    ::sigemptyset(&ignoredHere);
    ::sigaddset(&ignoredHere, SIGPIPE);
    ::posix_spawnattr_setsigdefault(&attributes, &ignoredHere);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF);
    pid_t process = 0;
    const int failure = ::posix_spawnp(&process,
                                       command.front().c_str(),
                                       &actions,
                                       &attributes,
                                       pointersTo(command).data(),
                                       pointersTo(environment).data());
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) {
        return posixError(failure, command.front());
    }
    return process;
}

// How a process that has ended failed; none if it did not.
std::optional<std::string> failureOf(pid_t process) {
    int status = 0;
    uninterrupted([&] { return ::waitpid(process, &status, 0); });
    if (WIFSIGNALED(status)) {
        return "it was ended by signal " + std::to_string(WTERMSIG(status));
    }
    return WEXITSTATUS(status) == 0
               ? std::nullopt
               : std::optional("it ended with status " + std::to_string(WEXITSTATUS(status)));
}

// Waits for the end of a process, also when nobody wants to hear of it any more: a process that
// has ended is kept by the system until its parent has asked for its status.
class EndOfProcess final : public QObject {
public:
    EndOfProcess(pid_t process, const std::shared_ptr<const ProcessReport>& report)
        : QObject(QCoreApplication::instance()),
          process_(process),
          end_(static_cast<int>(::syscall(SYS_pidfd_open, process, 0))),
          notifier_(end_.get(), QSocketNotifier::Read),
          report_(report) {
        connect(&notifier_, &QSocketNotifier::activated, this, [this] { finish(); });
        limit_.setSingleShot(true);
        limit_.callOnTimeout(this, [this] { tell(std::nullopt); });
        if (!end_) {
            mainQueue().async([this] {
                tell("its end cannot be watched");
                deleteLater();
            });
        }
    }

    void setLimit(std::chrono::milliseconds limit) { limit_.start(limit); }

private:
    void finish() {
        notifier_.setEnabled(false);
        limit_.stop();
        tell(failureOf(process_));
        deleteLater();
    }

    void tell(const std::optional<std::string>& failure) {
        if (const auto report = std::exchange(report_, {}).lock()) {
            (*report)(failure);
        }
    }

    pid_t process_;
    FileDescriptor end_;  // becomes readable when the process has ended
    QSocketNotifier notifier_;
    QTimer limit_;
    std::weak_ptr<const ProcessReport> report_;
};

}  // namespace

ProcessHandle startProcess(const std::vector<std::string>& command,
                           const Activation& activation,
                           std::optional<std::chrono::milliseconds> limit,
                           ProcessReport report) {
    auto handle = std::make_shared<const ProcessReport>(std::move(report));
    const auto process = spawn(command, activation);
    if (!process) {
        mainQueue().async([weak = std::weak_ptr(handle), failure = process.error().text] {
            if (const auto known = weak.lock()) {
                (*known)(failure);
            }
        });
        return handle;
    }
    moveIntoScope(process.value(), command.front());
    auto* const end = new EndOfProcess(process.value(), handle);  // the application owns it
    if (limit) {
        end->setLimit(*limit);
    }
    return handle;
}

}  // namespace quillet::platform
