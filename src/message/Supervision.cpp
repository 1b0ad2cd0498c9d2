#include "message/Supervision.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "message/Requests.h"

#include "platform/base/ProgramArguments.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::message {

namespace {

using platform::FileDescriptor;

void endWithParent(pid_t parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) {
        ::_exit(platform::kFailure);  // it has ended already
    }
}

bool asksToEnd(int signal) {
    return signal == SIGTERM || signal == SIGINT || signal == SIGHUP || signal == SIGKILL;
}

// The exit status of the process, or none if the next form is to be tried.
std::optional<int> outcomeOf(pid_t process) {
    int status = 0;
    if (platform::uninterrupted([&] { return ::waitpid(process, &status, 0); }) < 0) {
        return platform::kFailure;
    }
    if (WIFEXITED(status)) {
        return WEXITSTATUS(status);
    }
    return asksToEnd(WTERMSIG(status)) ? std::optional(platform::kSuccess) : std::nullopt;
}

}  // namespace

std::optional<int> runSupervised(const std::function<int(ShownForm, FileDescriptor)>& show) {
    for (const ShownForm form : {ShownForm::Whole, ShownForm::PlainText, ShownForm::Source}) {
        std::array<int, 2> ends{};
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
            return platform::kFailure;
        }
        FileDescriptor mine(ends[0]);
        FileDescriptor theirs(ends[1]);
        const pid_t self = ::getpid();
        const pid_t process = ::fork();
        if (process == 0) {
            endWithParent(self);
            mine = {};
            std::exit(show(form, std::move(theirs)));
        }
        if (process < 0) {
            return platform::kFailure;
        }
        theirs = {};
        answerRequests(mine.get());
        mine = {};
        if (const std::optional<int> status = outcomeOf(process)) {
            return status;
        }
    }
    return std::nullopt;
}

}  // namespace quillet::message
