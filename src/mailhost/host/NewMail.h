#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "mailhost/host/Publication.h"

namespace quillet::mailhost {

// Tells which messages of the Inboxes have just come. Remembers those of the last day only, since
// older ones never count. One thread.
class NewMail {
public:
    static constexpr std::int64_t kNewFor = 86'400;  // seconds from a message's date

    struct Message {
        std::string account;
        std::string identifier;
        std::string from;
        std::string subject;
    };

    // The unread messages of the last day that were not there when the folders were read before,
    // newest first within a folder. What is in a folder until `isComplete`, when all of it has been
    // read, was there before the program. `now`: seconds since 1970.
    std::vector<Message> read(const std::vector<PublishedAccount>& shown,
                              bool isComplete,
                              std::int64_t now);

    // Does not count the message as new when it comes: it comes back.
    void expect(const std::string& identifier, std::int64_t now) {
        known_.emplace(identifier, now);
    }

private:
    struct Folder {
        bool isComplete = false;
        // Messages up to this date may only have risen, to the place of one that is gone.
        std::int64_t hiddenUntil = std::numeric_limits<std::int64_t>::min();
    };

    // The rows of a folder that are new and unread.
    std::vector<MessageRow> readFolder(const std::vector<MessageRow>& rows,
                                       Folder& folder,
                                       std::int64_t since);

    std::map<std::string, Folder> folders_;      // by account and name
    std::map<std::string, std::int64_t> known_;  // dates by identifier
};

}  // namespace quillet::mailhost
