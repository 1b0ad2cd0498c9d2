#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillet::mailhost {

// What a row shows of a message. All texts are one line of valid UTF-8 without control characters
// and of at most kLongestText bytes.
struct MessageHeader {
    static constexpr std::size_t kLongestText = 1000;  // bytes

    std::string subject;               // empty: none
    std::string from;                  // the name, else the address, else the text of the header
    std::optional<std::int64_t> date;  // seconds since 1970; none if missing or unreadable
    std::string deliveredTo;           // address of the first "Delivered-To"; empty: none
};

// Reads at most this much of a file.
inline constexpr std::size_t kLongestHeader = std::size_t{256} * 1024;  // bytes

// The header of a message from its first bytes, which may be cut off or anything else. Encoded
// words are decoded in every charset; raw 8-bit text is UTF-8, else of the charset that
// Content-Type names, else Latin-1. Any thread.
MessageHeader parseHeader(std::string_view bytes);

// The header of the file at `path`. Empty fields if it cannot be opened or is not a regular file;
// symbolic links are not followed and nothing is waited for. Any thread.
MessageHeader readHeader(const std::string& path);

// The address that most "Delivered-To" lines of the newest 50 messages of a mail folder name;
// empty: none. In lower case. Any thread.
std::string commonestDeliveredTo(const std::string& folder);

}  // namespace quillet::mailhost
