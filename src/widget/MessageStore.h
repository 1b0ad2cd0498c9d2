#pragma once

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "model/RecordBlock.h"

namespace quillet {

// One read of the message store: the files of the enabled accounts' folders, in parts of a large
// store side by side. Called on one thread, under coordination of the folder that is read.
class MessageStore {
public:
    using EnabledAccounts = std::unordered_set<std::string>;  // by mail address

    explicit MessageStore(EnabledAccounts enabled);

    // Reads the folder that holds one folder an account. Where a value of a file raises, the rest
    // of the store is left unread; what was gathered stays.
    void read(const std::string& todayFolder);

    // What was gathered, in the order of the files.
    std::shared_ptr<const RecordBlocks> records() const noexcept { return records_; }

private:
    using Paths = std::vector<std::string>;

    Paths messageFiles(const std::string& todayFolder) const;
    void readFiles(const Paths& files);

    EnabledAccounts enabled_;
    std::shared_ptr<RecordBlocks> records_ = std::make_shared<RecordBlocks>();
};

}  // namespace quillet
