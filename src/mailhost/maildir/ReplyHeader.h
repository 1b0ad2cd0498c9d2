#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillet::mailhost {

// What showing a message in another program and replying to it take from its header.
struct ReplyHeader {
    static constexpr std::size_t kMostReferences = 30;

    std::string messageId;                // without brackets; as it stands, empty: none
    std::vector<std::string> references;  // of the answer: the thread, then the message itself
    std::vector<std::string> recipients;  // addresses: of Reply-To, else of From
    std::string subject;                  // of the message, as in MessageHeader
};

// Reads the header of a message from its first bytes, as parseHeader() does. A long thread keeps
// its first message and the last ones. Any thread.
ReplyHeader parseReplyHeader(std::string_view bytes);

// The header of the file at `path`; as readHeader(). Any thread.
ReplyHeader readReplyHeader(const std::string& path);

}  // namespace quillet::mailhost
