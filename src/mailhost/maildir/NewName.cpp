#include "mailhost/maildir/NewName.h"

#include <array>
#include <atomic>
#include <chrono>
#include <unistd.h>

#include "mailhost/maildir/MaildirName.h"

namespace quillet::mailhost {

namespace {

std::string hostName() {
    std::array<char, 256> name{};
    ::gethostname(name.data(), name.size() - 1);
    return name[0] == '\0' ? "localhost" : name.data();
}

}  // namespace

std::string newNameFor(std::string_view oldName) {
    static std::atomic<std::uint64_t> counter{0};
    using std::chrono::duration_cast;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto seconds = duration_cast<std::chrono::seconds>(now);
    const auto microseconds = duration_cast<std::chrono::microseconds>(now - seconds);
    return newMaildirName(oldName,
                          {seconds.count(),
                           static_cast<unsigned>(microseconds.count()),
                           static_cast<std::uint64_t>(::getpid()),
                           ++counter,
                           hostName()});
}

}  // namespace quillet::mailhost
