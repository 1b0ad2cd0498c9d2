#pragma once

#include <array>
#include <csignal>
#include <linux/capability.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quillet::test {

// Makes file permissions apply to the calling thread during the scope even if the tests run as
// root, who may otherwise read and write everything.
class OrdinaryPermissions {
public:
    OrdinaryPermissions() {
        call(SYS_capget, before_);
        auto without = before_;
        without[0].effective &= ~(CAP_TO_MASK(CAP_DAC_OVERRIDE) | CAP_TO_MASK(CAP_DAC_READ_SEARCH));
        call(SYS_capset, without);
    }
    ~OrdinaryPermissions() { call(SYS_capset, before_); }
    OrdinaryPermissions(const OrdinaryPermissions&) = delete;
    OrdinaryPermissions& operator=(const OrdinaryPermissions&) = delete;

private:
    using Capabilities = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

    static void call(long number, Capabilities& capabilities) {
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        if (::syscall(number, &header, capabilities.data()) != 0) {
            throw std::runtime_error("the capabilities of the thread cannot be changed");
        }
    }

    Capabilities before_{};
};

// Limits the files of this process to `bytes` during the scope, as if the disk were full: writing
// more fails with EFBIG.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &old_);
        const rlimit limit{bytes, old_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*handler_)(int);
    rlimit old_{};
};

}  // namespace quillet::test
