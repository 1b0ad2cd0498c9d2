#include "mailhost/host/AfterChange.h"

#include <QSocketNotifier>
#include <QTimer>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <map>
#include <optional>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "platform/base/Log.h"
#include "platform/base/Result.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::mailhost {

namespace {

using platform::FileDescriptor;
using platform::Log;

constexpr std::chrono::seconds kQuiet{5};

// In a process group of its own: a terminal's Ctrl+C ends the host, not the sync.
platform::Result<pid_t> start(const std::vector<std::string>& command) {
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (const std::string& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));  // the interface never writes to them
    }
    words.push_back(nullptr);
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
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF);
    pid_t process = 0;
    const int failure =
        ::posix_spawnp(&process, words.front(), &actions, &attributes, words.data(), environ);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) {
        return platform::posixError(failure, command.front());
    }
    return process;
}

// How a process that has ended failed; none if it did not.
std::optional<std::string> failureOf(pid_t process) {
    int status = 0;
    platform::uninterrupted([&] { return ::waitpid(process, &status, 0); });
    if (WIFSIGNALED(status)) {
        return "it was ended by signal " + std::to_string(WTERMSIG(status));
    }
    return WEXITSTATUS(status) == 0
               ? std::nullopt
               : std::optional("it ended with status " + std::to_string(WEXITSTATUS(status)));
}

}  // namespace

struct AfterChange::State final {
    struct Account {
        QTimer quiet;
        pid_t process = 0;
        FileDescriptor end;  // becomes readable when the process has ended
        std::unique_ptr<QSocketNotifier> notifier;
        bool isChangedMeanwhile = false;
    };

    void changed(const std::string& name) {
        Account& account = accounts[name];
        if (account.notifier) {
            account.isChangedMeanwhile = true;
            return;
        }
        account.quiet.setSingleShot(true);
        account.quiet.disconnect();
        QObject::connect(&account.quiet, &QTimer::timeout, [this, name] { run(name); });
        account.quiet.start(kQuiet);
    }

    void run(const std::string& name) {
        const std::vector<std::string> command = commandOf(name);
        if (command.empty()) {
            finished(name);
            return;
        }
        const auto started = start(command);
        if (!started) {
            tell(name, started.error().description());
            finished(name);
            return;
        }
        Account& account = accounts[name];
        account.process = started.value();
        account.end =
            FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, started.value(), 0)));
        if (!account.end) {
            tell(name, "its end cannot be watched");
            finished(name);
            return;
        }
        account.notifier =
            std::make_unique<QSocketNotifier>(account.end.get(), QSocketNotifier::Read);
        QObject::connect(
            account.notifier.get(), &QSocketNotifier::activated, [this, name] { finish(name); });
    }

    void finish(const std::string& name) {
        Account& account = accounts[name];
        account.notifier->setEnabled(false);
        account.notifier.release()->deleteLater();  // it is calling
        account.end = FileDescriptor();
        if (const auto failure = failureOf(account.process)) {
            tell(name, *failure);
        }
        if (std::exchange(account.isChangedMeanwhile, false)) {
            changed(name);
        } else {
            finished(name);
        }
    }

    void tell(const std::string& name, const std::string& failure) const {
        Log::write("MailHost after-change of %@: %@", {name, failure});
        failed(name, failure);
    }

    std::function<std::vector<std::string>(const std::string& account)> commandOf;
    std::function<void(const std::string& account)> finished;
    std::function<void(const std::string& account, const std::string& failure)> failed;
    std::map<std::string, Account> accounts;
};

AfterChange::AfterChange(
    std::function<std::vector<std::string>(const std::string& account)> commandOf,
    std::function<void(const std::string& account)> finished,
    std::function<void(const std::string& account, const std::string& failure)> failed)
    : state_(std::make_unique<State>()) {
    state_->commandOf = std::move(commandOf);
    state_->finished = std::move(finished);
    state_->failed = std::move(failed);
}

AfterChange::~AfterChange() = default;

void AfterChange::changed(const std::string& account) {
    state_->changed(account);
}

}  // namespace quillet::mailhost
