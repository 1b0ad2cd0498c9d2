// Reads bytes as a message file. Its texts must be fit to be shown and its names to be saved,
// whatever they are.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "message/BodyText.h"
#include "message/MessageFile.h"
#include "message/ReplyUrl.h"

#include "fuzz/Require.h"
#include "platform/base/Ascii.h"
#include "platform/base/StandardError.h"
#include "platform/base/Utf8.h"

namespace quillet::fuzz {

namespace {

void requireBody(const std::string& text) {
    require(!platform::firstInvalidUtf8(text), "a body is UTF-8");
    require(text.find_first_of(std::string_view("\0\r\x1b", 3)) == std::string::npos,
            "a body has no controls");
}

void readMessageOfBytes(std::string_view bytes) {
    const message::ParsedMessage read = message::parseMessage(bytes);
    for (const auto* entries : {&read.from, &read.to, &read.cc, &read.bcc, &read.replyTo}) {
        for (const std::string& entry : *entries) {
            require(platform::printableLine(entry) == entry, "an address is one printable line");
        }
    }
    require(platform::printableLine(read.subject) == read.subject, "the subject is one line");
    requireBody(read.plain);
    requireBody(read.html);
    requireBody(message::plainTextOfHtml(read.html));
    for (const message::Attachment& file : read.attachments) {
        require(!file.name.empty() && file.name.find('/') == std::string::npos &&
                    !file.name.starts_with('.') && file.name.size() <= 160 &&
                    platform::printableLine(file.name) == file.name,
                "an attachment has the name of a file");
    }
    for (const auto& [identifier, place] : read.pictures) {
        require(place < read.attachments.size(), "a picture is an attachment");
    }
    require(platform::isAsciiText(message::replyUrl(read)), "the answer's URL is ASCII");
}

}  // namespace

}  // namespace quillet::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quillet::fuzz::readMessageOfBytes({reinterpret_cast<const char*>(data), size});
    return 0;
}
