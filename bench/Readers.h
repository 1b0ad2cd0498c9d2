#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/plist/Number.h"

// The measured readers. Each does what the widget's update does: it reads every file of the store,
// builds a record of every message with all fields and the date text, and sorts the records newest
// first. Reading the account list costs little beside that, so the peers leave it out: they list
// the folders and take every account as enabled.
namespace quillet::bench {

// A message as the peers keep it.
struct PeerMessage {
    std::uint64_t idx = 0;
    std::uint64_t acc_idx = 0;
    std::uint64_t icon_fetch = 0;
    std::uint64_t flip = 0;
    std::string subject;
    std::string account;
    std::string from;
    std::string messageId;
    std::string folderPath;
    std::string dateString;
    double date = 0;
    platform::Number unread;
    platform::Number folderStandardId;
};
using PeerMessages = std::vector<std::shared_ptr<PeerMessage>>;

// What a reader has read: the number of messages, and a digest of all their fields, which is made
// after the clock has stopped. Readers that did the same work have equal outcomes.
struct Outcome {
    std::size_t messages = 0;
    std::function<std::uint64_t()> digest;
};

using Reader = std::function<Outcome(const std::string& container)>;

Outcome readWithQuillet(const std::string& container);
Outcome readWithLibplist(const std::string& container);
Outcome readWithPugixml(const std::string& container);  // only XML
Outcome readPlainBytes(const std::string& container);   // no messages; one reused buffer

// For the peers: calls `read` with the bytes of each message file of the store. All files share one
// buffer, and `read` may write to it.
void forEachFile(const std::string& container,
                 const std::function<void(char* bytes, std::size_t size)>& read);
// For the peers: adds the date texts, each formatted once a day as the widget does, and sorts.
Outcome finished(PeerMessages messages);

}  // namespace quillet::bench
