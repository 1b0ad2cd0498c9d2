#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/base/Error.h"
#include "platform/files/FileDescriptor.h"

// What the confined process of the window asks of the process that started it. Both ends hold one
// end of a stream socket.
namespace quillet::message {

class Requests {
public:
    explicit Requests(platform::FileDescriptor socket) : socket_(std::move(socket)) {}

    // Writes a file whole or not at all; replaces an existing one. Waits until it is written.
    std::optional<platform::Error> save(const std::string& path, std::string_view content) const;
    // Hands a link to the program that the desktop has for it; an error if there is none or if the
    // scheme is not http, https or mailto.
    std::optional<platform::Error> open(const std::string& url) const;

private:
    platform::FileDescriptor socket_;
};

// Follows the requests that come in, until the other end is closed or sends nonsense. Call it in a
// process of one thread.
void answerRequests(int socket);

}  // namespace quillet::message
