#include "bench/FolderClock.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "bench/PanelClock.h"

namespace quillet::bench {

FolderClock::FolderClock(const std::string& folder)
    : changes_(::inotify_init1(IN_CLOEXEC)), end_(::eventfd(0, EFD_CLOEXEC)) {
    if (!changes_ || !end_ ||
        ::inotify_add_watch(changes_.get(), folder.c_str(), IN_MOVED_TO) < 0) {
        throw std::system_error(errno, std::generic_category(), folder);
    }
    thread_ = std::thread([this] { watch(); });
}

FolderClock::~FolderClock() {
    ::eventfd_write(end_.get(), 1);
    thread_.join();
}

void FolderClock::expect(std::function<bool()> isThere) {
    isThere_ = std::move(isThere);
    time_ = 0;
    isWaiting_ = true;
}

void FolderClock::watch() {
    std::array<pollfd, 2> files{{{changes_.get(), POLLIN, 0}, {end_.get(), POLLIN, 0}}};
    std::array<char, 16'384> events{};
    while (::poll(files.data(), files.size(), -1) > 0 && files[1].revents == 0) {
        const double time = now();
        if (::read(changes_.get(), events.data(), events.size()) > 0 && isWaiting_ && isThere_()) {
            isWaiting_ = false;
            time_ = time;
            QCoreApplication::eventDispatcher()->wakeUp();
        }
    }
}

}  // namespace quillet::bench
