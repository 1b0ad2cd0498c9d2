#pragma once

#include <functional>
#include <optional>

#include "message/ShownForm.h"

#include "platform/files/FileDescriptor.h"

namespace quillet::message {

// Runs `show` in a process of its own, with one end of the socket for Requests, and follows its
// requests meanwhile. If that process is ended by a fault, by too much memory or by too much work,
// `show` gets the next form in a new process. Returns the exit status of the last one, or none if
// no form could be shown. A signal that asks a process to end (SIGTERM, SIGINT, SIGHUP, SIGKILL)
// ends the attempts with status 0, and the process never outlives the caller's. Call it in a
// process of one thread, before the application object is made.
std::optional<int> runSupervised(
    const std::function<int(ShownForm, platform::FileDescriptor)>& show);

}  // namespace quillet::message
