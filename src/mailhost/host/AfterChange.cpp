#include "mailhost/host/AfterChange.h"

#include <QTimer>
#include <chrono>
#include <map>
#include <optional>
#include <utility>

#include "platform/base/Log.h"
#include "platform/desktop/ApplicationService.h"
#include "platform/desktop/ProcessStart.h"

namespace quillet::mailhost {

namespace {

using platform::Log;

constexpr std::chrono::seconds kQuiet{5};

}  // namespace

struct AfterChange::State final {
    struct Account {
        QTimer quiet;
        platform::ProcessHandle process;  // while the command runs
        bool isChangedMeanwhile = false;
    };

    void changed(const std::string& name) {
        Account& account = accounts[name];
        if (account.process) {
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
        accounts[name].process = platform::startProcess(
            command, {}, std::nullopt, [this, name](const std::optional<std::string>& failure) {
                finish(name, failure);
            });
    }

    void finish(const std::string& name, const std::optional<std::string>& failure) {
        Account& account = accounts[name];
        account.process.reset();
        if (failure) {
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
