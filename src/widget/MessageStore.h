#pragma once

#include <memory>
#include <string>
#include <unordered_set>

#include "model/ExtensionMessageReader.h"
#include "model/RecordBlock.h"
#include "platform/plist/PropertyList.h"

namespace quillet {

// One read of the message store: the files of the enabled accounts' folders, one after the other
// in listing order. A file that cannot be read is skipped, with a log line where it holds something
// else than it should. One thread, under coordination of the folder that is read.
class MessageStore {
public:
    using EnabledAccounts = std::unordered_set<std::string>;  // by mail address

    explicit MessageStore(EnabledAccounts enabled);

    // Reads the folder that holds one folder per account, with dates as seen at the time of the
    // call. Where a value of a file raises, the rest of the store is left unread; what was gathered
    // stays.
    void read(const std::string& todayFolder);

    // What was gathered, in the order of reading.
    const std::shared_ptr<RecordBlock>& records() const noexcept { return records_; }

private:
    void readFolders(const std::string& todayFolder, ExtensionMessageReader& messages);
    void readFile(const std::string& path, ExtensionMessageReader& messages);

    EnabledAccounts enabled_;
    platform::PropertyListDocument document_;  // one for all files: its storage is reused
    std::shared_ptr<RecordBlock> records_ = RecordBlock::make();
};

}  // namespace quillet
