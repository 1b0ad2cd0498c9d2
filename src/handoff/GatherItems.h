#pragma once

#include <functional>
#include <string>

#include "handoff/Gathering.h"
#include "platform/base/Queue.h"

namespace quillet {

// GetItemForExtension on a queue and with a pause of the caller's choice: tests bring their own.
// GetItemForExtension calls it, so Gathering.cpp includes this header and this one Gathering.h.
void gatherItems(platform::ExtensionContext context,
                 std::string service,
                 ExtensionUtilities::ShareCompletion completion,
                 platform::Queue& queue,
                 std::function<void(double seconds)> sleep);

}  // namespace quillet
