#pragma once

#include <memory>
#include <string>
#include <unordered_set>

#include "model/ExtensionMessageReader.h"
#include "model/RecordBlock.h"
#include "platform/plist/PropertyList.h"

namespace quillet {

// One read of the message store: the files of the enabled accounts' folders in listing order. A
// file that cannot be read is skipped; a file that holds the wrong thing is logged too. One thread,
// which coordinates the read of the folder.
class MessageStore {
public:
    using EnabledAccounts = std::unordered_set<std::string>;  // by mail address

    explicit MessageStore(EnabledAccounts enabled);

    // Reads the folder that holds one folder per account. Date texts are as seen now. A value that
    // raises ends the read of the whole store; what was gathered until then stays.
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
