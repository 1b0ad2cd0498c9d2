#include "mailhost/maildir/JournalLine.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace quillet::mailhost {

namespace {

constexpr std::string_view kHexadecimalDigits = "0123456789ABCDEF";

bool isControl(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7F;
}

void appendField(std::string& line, std::string_view field) {
    for (const char character : field) {
        if (isControl(character) || character == '%') {
            const auto byte = static_cast<unsigned char>(character);
            line += '%';
            line += kHexadecimalDigits[byte / 16];
            line += kHexadecimalDigits[byte % 16];
        } else {
            line += character;
        }
    }
}

std::optional<std::string> fieldFrom(std::string_view text) {
    std::string field;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (isControl(text[at])) {
            return std::nullopt;
        }
        if (text[at] != '%') {
            field += text[at];
            continue;
        }
        const std::string_view digits = text.substr(at + 1, 2);
        unsigned byte = 0;
        const char* end = digits.data() + digits.size();
        const auto read = std::from_chars(digits.data(), end, byte, 16);
        if (digits.size() != 2 || read.ec != std::errc() || read.ptr != end) {
            return std::nullopt;
        }
        field += static_cast<char>(byte);
        at += 2;
    }
    return field;
}

}  // namespace

std::string journalLine(const std::vector<std::string>& fields) {
    std::string line;
    for (const std::string& field : fields) {
        line.append(line.empty() ? "" : "\t");
        appendField(line, field);
    }
    return line += '\n';
}

std::vector<std::string> parseJournalLine(std::string_view line) {
    std::vector<std::string> fields;
    for (;;) {
        const std::size_t tab = std::min(line.find('\t'), line.size());
        auto field = fieldFrom(line.substr(0, tab));
        if (!field) {
            return {};
        }
        fields.push_back(std::move(*field));
        if (tab == line.size()) {
            return fields;
        }
        line.remove_prefix(tab + 1);
    }
}

}  // namespace quillet::mailhost
