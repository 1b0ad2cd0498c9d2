#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillet::platform {

struct Activation;

// Told once, from the event loop: why the program failed, as a part of a sentence; none if it did
// not.
using ProcessReport = std::function<void(const std::optional<std::string>& failure)>;
// As long as this lives, the report may come.
using ProcessHandle = std::shared_ptr<const ProcessReport>;

// Starts a program that lives on when this one ends: in a session of its own, and in a scope of its
// own if systemd manages the user's session, so that what limits or ends this program leaves it
// alone. It reads nothing, writes to standard error, and comes to the front with the activation, if
// one is given. The first word of `command`, which is not empty, is looked for on PATH.
//
// A program fails if it cannot be started, ends with another status than 0 or is ended by a signal.
// With a `limit`, one that still runs after that time has not failed. Main thread only.
[[nodiscard]] ProcessHandle startProcess(const std::vector<std::string>& command,
                                         const Activation& activation,
                                         std::optional<std::chrono::milliseconds> limit,
                                         ProcessReport report);

}  // namespace quillet::platform
