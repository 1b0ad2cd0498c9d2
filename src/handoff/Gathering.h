#pragma once

#include <functional>
#include <string>

#include "handoff/ExtensionUtilities.h"
#include "platform/base/Queue.h"

namespace quillet {

// What the gathering of shared items runs on; tests bring a time of their own.
struct GatheringServices {
    platform::Queue& queue;
    std::function<void(double seconds)> sleep;
};

// GetItemForExtension on services of the caller's choice.
void gatherItems(platform::ExtensionContext context,
                 std::string service,
                 ExtensionUtilities::ShareCompletion completion,
                 GatheringServices services);

}  // namespace quillet
