#include "message/Requests.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#include "message/LinkOpening.h"

#include "platform/files/FileManager.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::message {

namespace {

using platform::Error;

// Twice the longest file: an attachment is never longer than the file that it came in.
constexpr std::uint64_t kLongestContent = std::uint64_t{128} << 20U;  // bytes
constexpr std::uint64_t kLongestTarget = std::uint64_t{64} << 10U;    // bytes of a path or a link

enum class Task : std::uint64_t { Save, Open };

// Stands before the bytes of the target and the content. An answer has the reason of a failure as
// its target.
struct Head {
    std::uint64_t task = 0;
    std::uint64_t target = 0;   // bytes
    std::uint64_t content = 0;  // bytes
};

bool sendAll(int socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = platform::uninterrupted(
            [&] { return ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL); });
        if (sent <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

bool receiveAll(int socket, char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t count =
            platform::uninterrupted([&] { return ::recv(socket, bytes, size, 0); });
        if (count <= 0) {
            return false;
        }
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

bool sendMessage(int socket, Task task, std::string_view target, std::string_view content) {
    const Head head{static_cast<std::uint64_t>(task), target.size(), content.size()};
    return sendAll(socket, {reinterpret_cast<const char*>(&head), sizeof(head)}) &&
           sendAll(socket, target) && sendAll(socket, content);
}

struct Message {
    Task task = Task::Save;
    std::string target;
    std::string content;
};

std::optional<Message> receiveMessage(int socket) {
    Head head;
    if (!receiveAll(socket, reinterpret_cast<char*>(&head), sizeof(head)) ||
        head.target > kLongestTarget || head.content > kLongestContent ||
        head.task > static_cast<std::uint64_t>(Task::Open)) {
        return std::nullopt;
    }
    Message message{static_cast<Task>(head.task),
                    std::string(head.target, '\0'),
                    std::string(head.content, '\0')};
    const bool isWhole = receiveAll(socket, message.target.data(), message.target.size()) &&
                         receiveAll(socket, message.content.data(), message.content.size());
    return isWhole ? std::optional(std::move(message)) : std::nullopt;
}

std::optional<Error> ask(int socket, Task task, std::string_view target, std::string_view content) {
    if (target.size() > kLongestTarget) {
        return platform::posixError(ENAMETOOLONG, std::string(target.substr(0, 100)));
    }
    if (!sendMessage(socket, task, target, content)) {
        return platform::posixError(EPIPE, std::string(target));
    }
    const std::optional<Message> answer = receiveMessage(socket);
    if (!answer) {
        return platform::posixError(EPIPE, std::string(target));
    }
    return answer->target.empty() ? std::nullopt : std::optional(Error{"", 0, answer->target});
}

}  // namespace

std::optional<Error> Requests::save(const std::string& path, std::string_view content) const {
    return ask(socket_.get(), Task::Save, path, content);
}

std::optional<Error> Requests::open(const std::string& url) const {
    return ask(socket_.get(), Task::Open, url, {});
}

void answerRequests(int socket) {
    while (const std::optional<Message> request = receiveMessage(socket)) {
        const std::optional<Error> error =
            request->task == Task::Save
                ? platform::FileManager::writeFileAtomically(request->target, request->content)
                : openLink(request->target);
        if (!sendMessage(socket, request->task, error ? error->description() : "", {})) {
            return;
        }
    }
}

}  // namespace quillet::message
