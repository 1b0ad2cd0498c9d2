#include "mailhost/maildir/HeaderFields.h"

#include <algorithm>

#include "platform/base/Ascii.h"

namespace quillet::mailhost {

namespace {

constexpr std::string_view kFieldBlanks = " \t";

// Takes the first line away, with the folded lines that follow it.
std::string_view takeField(std::string_view& header) {
    std::size_t end = header.find('\n');
    while (end != std::string_view::npos && end + 1 < header.size() &&
           kFieldBlanks.find(header[end + 1]) != std::string_view::npos) {
        end = header.find('\n', end + 1);
    }
    const std::size_t length = end == std::string_view::npos ? header.size() : end + 1;
    const std::string_view field = header.substr(0, length);
    header.remove_prefix(length);
    return field;
}

// Mail that came out of an mbox file may still have the line that began it there.
std::string_view withoutMboxLine(std::string_view bytes) {
    if (bytes.starts_with("From ") || bytes.starts_with(">From ")) {
        bytes.remove_prefix(std::min(bytes.find('\n'), bytes.size() - 1) + 1);
    }
    return bytes;
}

}  // namespace

HeaderFields::HeaderFields(std::string_view bytes) : header_(withoutMboxLine(bytes)) {
    header_ = header_.substr(0, endIn(header_).value_or(header_.size()));
}

std::optional<std::string_view> HeaderFields::valueOf(std::string_view name) const {
    for (std::string_view rest = header_; !rest.empty();) {
        const std::string_view field = takeField(rest);
        const std::size_t colon = field.find(':');
        if (colon != std::string_view::npos &&
            platform::equalsIgnoringAsciiCase(
                platform::trimmed(field.substr(0, colon), kFieldBlanks), name)) {
            return field.substr(colon + 1);
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> HeaderFields::endIn(std::string_view bytes, std::size_t start) {
    if (start == 0 && (bytes.starts_with("\n") || bytes.starts_with("\r\n"))) {
        return 0;
    }
    for (std::size_t end = bytes.find('\n', start); end != std::string_view::npos;
         end = bytes.find('\n', end + 1)) {
        const std::string_view next = bytes.substr(end + 1, 2);
        if (next.starts_with('\n') || next == "\r\n") {
            return end + 1;
        }
    }
    return std::nullopt;
}

}  // namespace quillet::mailhost
