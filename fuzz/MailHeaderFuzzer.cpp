// Reads bytes as the header of a message. Its texts must fit into a row whatever they are.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "mailhost/maildir/HeaderFile.h"
#include "mailhost/maildir/MessageHeader.h"

#include "fuzz/Require.h"
#include "platform/base/StandardError.h"

namespace quillet::fuzz {

namespace {

void readHeaderOfBytes(std::string_view bytes) {
    const mailhost::MessageHeader header = mailhost::parseHeader(bytes);
    for (const std::string& text : {header.subject, header.from, header.deliveredTo}) {
        require(text.size() <= mailhost::MessageHeader::kLongestText, "a text keeps to its limit");
        require(platform::printableLine(text) == text, "a text is one printable line");
        require(text.find("  ") == std::string::npos, "a text has single blanks");
        require(!text.starts_with(' ') && !text.ends_with(' '), "a text has no outer blanks");
    }
    require(mailhost::parseHeaderDate(bytes) == header.date, "the date alone is the same");
}

}  // namespace

}  // namespace quillet::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quillet::fuzz::readHeaderOfBytes({reinterpret_cast<const char*>(data), size});
    return 0;
}
