#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quillet::message {

// A file that came with a message, decoded.
struct Attachment {
    std::string name;  // one line, no path, never empty
    std::string type;  // "image/png"
    std::string content;
};

// What a message file holds, as a window shows it. Texts are valid UTF-8; those of the header are
// one line without control characters.
struct ParsedMessage {
    std::vector<std::string> from;  // each "Name <address>" or an address; so are the next three
    std::vector<std::string> to;
    std::vector<std::string> cc;
    std::vector<std::string> bcc;
    std::vector<std::string> replyTo;  // the addresses that an answer goes to
    std::string subject;
    std::optional<std::int64_t> date;  // seconds since 1970
    std::string messageId;             // without brackets; empty: none
    std::string references;            // identifiers in brackets

    std::string plain;   // empty: none
    std::string html;    // of a stranger; empty: none
    bool isCut = false;  // the body goes on, or further parts were left out
    std::vector<Attachment> attachments;
    // By their content identifier, without brackets: places in `attachments`.
    std::map<std::string, std::size_t> pictures;
};

}  // namespace quillet::message
