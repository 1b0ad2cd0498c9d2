#include "message/Confinement.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"

namespace quillet::message {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kHasSanitizer = true;
#else
constexpr bool kHasSanitizer = false;
#endif

constexpr rlim_t kMostMemory = rlim_t{512} << 20U;  // bytes that can be written
constexpr std::chrono::milliseconds kBeat{200};
constexpr int kLongestTurn = 1;  // seconds of processor time

void limit(int resource, rlim_t most) {
    rlimit now{};
    ::getrlimit(static_cast<__rlimit_resource_t>(resource), &now);
    const rlim_t value = std::min(most, now.rlim_max);
    const rlimit wanted{value, value};
    ::setrlimit(static_cast<__rlimit_resource_t>(resource), &wanted);
}

// What the running kernel can forbid: everything that changes files, and running programs.
std::uint64_t changesOfFiles() {
    const long version =
        ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1) {
        return 0;
    }
    constexpr std::uint64_t kTruncate = 1U << 14U;  // since the third version
    return LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_WRITE_FILE |
           LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
           LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_DIR |
           LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_MAKE_SOCK |
           LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK |
           LANDLOCK_ACCESS_FS_MAKE_SYM | (version >= 3 ? kTruncate : 0);
}

bool forbidChangesOfFiles() {
    landlock_ruleset_attr forbidden{};
    forbidden.handled_access_fs = changesOfFiles();
    if (forbidden.handled_access_fs == 0) {
        return false;
    }
    const platform::FileDescriptor rules(
        static_cast<int>(::syscall(SYS_landlock_create_ruleset, &forbidden, sizeof(forbidden), 0)));
    // The display may be a device that is written to.
    const platform::FileDescriptor devices(::open("/dev", O_PATH | O_CLOEXEC));
    landlock_path_beneath_attr allowed{};
    allowed.allowed_access = LANDLOCK_ACCESS_FS_WRITE_FILE;
    allowed.parent_fd = devices.get();
    ::syscall(SYS_landlock_add_rule, rules.get(), LANDLOCK_RULE_PATH_BENEATH, &allowed, 0);
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    return ::syscall(SYS_landlock_restrict_self, rules.get(), 0) == 0;
}

}  // namespace

bool confineProcess() {
    limit(RLIMIT_CORE, 0);
    if (!kHasSanitizer) {
        limit(RLIMIT_DATA, kMostMemory);
    }
    return forbidChangesOfFiles();
}

TurnLimit::TurnLimit() {
    std::signal(SIGPROF, SIG_DFL);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPROF);
    sigprocmask(SIG_UNBLOCK, &signals, nullptr);
    timer_.callOnTimeout([] { grant(kLongestTurn); });
    timer_.start(kBeat);
    grant(kLongestTurn);
}

TurnLimit::~TurnLimit() {
    grant(0);
}

void TurnLimit::grant(int seconds) {
    const itimerval timer{{0, 0}, {seconds, 0}};
    ::setitimer(ITIMER_PROF, &timer, nullptr);
}

}  // namespace quillet::message
