#include "message/LinkOpening.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <gio/gio.h>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/base/Ascii.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::message {

namespace {

constexpr guint kFlushTime = 3;  // seconds in which a request leaves for an application on the bus

// The reason why no program was started; empty: one was.
std::string launch(const std::string& url) {
    GError* failure = nullptr;
    if (g_app_info_launch_default_for_uri(url.c_str(), nullptr, &failure) != FALSE) {
        return {};
    }
    const std::unique_ptr<GError, void (*)(GError*)> owned(failure, g_error_free);
    const bool isUnknown = owned->domain == G_IO_ERROR && owned->code == G_IO_ERROR_NOT_SUPPORTED;
    return isUnknown ? "there is no program for " + url.substr(0, url.find(':') + 1)
                     : owned->message;
}

// The library starts threads, and some programs get their request over the session bus only while
// a main loop runs, so none of that happens in the caller's process.
[[noreturn]] void launchAndEnd(const std::string& url, int answer) {
    const std::string reason = launch(url);
    [[maybe_unused]] const ssize_t written = ::write(answer, reason.data(), reason.size());
    ::close(answer);
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    g_timeout_add_seconds(
        kFlushTime,
        [](gpointer data) {
            g_main_loop_quit(static_cast<GMainLoop*>(data));
            return G_SOURCE_REMOVE;
        },
        loop);
    g_main_loop_run(loop);
    ::_exit(0);
}

std::string textFrom(int descriptor) {
    std::string text;
    std::array<char, 512> bytes{};
    for (;;) {
        const ssize_t count =
            platform::uninterrupted([&] { return ::read(descriptor, bytes.data(), bytes.size()); });
        if (count <= 0) {
            return text;
        }
        text.append(bytes.data(), static_cast<std::size_t>(count));
    }
}

}  // namespace

bool mayOpen(std::string_view url) {
    constexpr std::array<std::string_view, 3> kSchemes{"http:", "https:", "mailto:"};
    return std::any_of(kSchemes.begin(), kSchemes.end(), [url](std::string_view scheme) {
        return platform::equalsIgnoringAsciiCase(url.substr(0, scheme.size()), scheme);
    });
}

std::optional<platform::Error> openLink(const std::string& url) {
    std::array<int, 2> ends{};
    if (!mayOpen(url)) {
        return platform::posixError(EPROTONOSUPPORT, url);
    }
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return platform::posixError(errno, url);
    }
    const platform::FileDescriptor reader(ends[0]);
    platform::FileDescriptor writer(ends[1]);
    const pid_t child = ::fork();
    if (child == 0) {
        // The one that stays belongs to nobody who would have to wait for it.
        if (::fork() == 0) {
            launchAndEnd(url, writer.get());
        }
        ::_exit(0);
    }
    if (child < 0) {
        return platform::posixError(errno, url);
    }
    platform::uninterrupted([child] { return ::waitpid(child, nullptr, 0); });
    writer = {};
    const std::string reason = textFrom(reader.get());
    return reason.empty() ? std::nullopt : std::optional(platform::Error{"GIO", 0, reason});
}

}  // namespace quillet::message
