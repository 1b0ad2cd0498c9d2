#pragma once

#include <memory>
#include <string>
#include <unordered_set>

#include "model/ExtensionMessageReader.h"
#include "model/RecordBlock.h"
#include "platform/foundation/PropertyList.h"

namespace quillet {

// One read of the message store: the files of the enabled accounts' folders. What cannot be read
// is skipped, with a log line where it is a file that holds something else than it should.
// One thread, under coordination of the folder that is read.
class MessageStore {
public:
    using EnabledAccounts = std::unordered_set<std::string>;  // by mail address

    explicit MessageStore(EnabledAccounts enabled);

    // Reads the folder that holds one folder an account. Where a value of a file raises, the rest
    // of the store is left unread; what was gathered stays.
    void read(const std::string& todayFolder);

    // What was gathered, in the order of reading.
    const std::shared_ptr<RecordBlock>& records() const noexcept { return reader_.records(); }

private:
    void readFolders(const std::string& todayFolder);
    void readFile(const std::string& path);

    EnabledAccounts enabled_;
    platform::PropertyListDocument document_;  // one for all files: its storage is reused
    ExtensionMessageReader reader_;
};

}  // namespace quillet
