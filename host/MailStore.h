#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "model/ExtensionMessage.h"
#include "platform/base/Result.h"

// The messages of a container, as commands of the widget name them. Works on all message files
// below the data folder's "Today" under its coordination lock, for which it waits without a limit.
// Files that cannot be read, or that hold something else, are passed over. Any thread.
namespace quillet::host {

// The identity of a message.
struct MessageKey {
    std::string account;     // mail address
    std::string identifier;  // "messageId"
};

// Takes every copy of the message out of its files and tells how many there were. Each file keeps
// everything else: its values, their order and kinds, its format. A file that cannot be written
// stays as it is, and the others are still done; the error then tells of the first.
platform::Result<std::size_t> removeMessage(const std::string& dataFolder, const MessageKey& key);

// The first copy of the message; null where there is none. An error where the lock
// cannot be taken.
platform::Result<std::shared_ptr<ExtensionMessage>> findMessage(const std::string& dataFolder,
                                                                const MessageKey& key);

}  // namespace quillet::host
