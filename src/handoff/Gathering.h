#pragma once

#include <functional>
#include <memory>
#include <string>

#include "model/ExtensionMessage.h"
#include "platform/extension/ExtensionContext.h"

// Makes a draft of the items that an extension was given.
namespace quillet::ExtensionUtilities {

// Receives the gathered draft; `error` is always 0.
using ShareCompletion =
    std::function<void(const std::shared_ptr<ExtensionMessage>& message, int error)>;

// Gathers the items into a draft on the background queue and passes it to `completion` there. Texts
// and links become its HTML body, a link's title its subject, files and images its attachments, as
// paths in the staging folder of `service`. It waits for items that are loading, about ten seconds
// at most; items that arrive later are still added to the draft. If a provider answers more than
// once, only its first answer counts. Failures are logged and leave out what failed. Any thread.
void GetItemForExtension(platform::ExtensionContext context,
                         std::string service,
                         ShareCompletion completion);

}  // namespace quillet::ExtensionUtilities
