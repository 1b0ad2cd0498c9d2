#include "platform/foundation/PercentEncoding.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "platform/foundation/UriCharacters.h"

namespace quillet::platform {

namespace {

// Texts are made in a buffer of this size and appended from it, which spares a long result the
// zeroes that growing it in place would write first.
constexpr std::size_t kBuffer = 3072;

// What a byte becomes. All four bytes are copied always and `length` of them count, so that the
// loop over a text has no branch that depends on it.
struct Encoded {
    std::array<char, 3> text;
    std::uint8_t length;
};
static_assert(sizeof(Encoded) == 4);
using EncodingTable = std::array<Encoded, 256>;

constexpr EncodingTable makeTable(unsigned kept) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    EncodingTable table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        const char character = static_cast<char>(byte);
        if (isUriCharacter(character, kept)) {
            table[byte] = {{character}, 1};
        } else {
            table[byte] = {{'%', kDigits[byte >> 4U], kDigits[byte & 15U]}, 3};
        }
    }
    return table;
}

constexpr EncodingTable kKeepingUnreserved = makeTable(kUriUnreserved);
constexpr EncodingTable kKeepingPath = makeTable(kUriPath);

const Encoded& encoded(const EncodingTable& table, char character) {
    return table[static_cast<unsigned char>(character)];
}

std::size_t encodedLength(std::string_view text, const EncodingTable& table) {
    std::size_t length = 0;
    for (const char character : text) {
        length += encoded(table, character).length;
    }
    return length;
}

// The value of a hexadecimal digit.
unsigned digitValue(char digit) {
    const auto byte = static_cast<unsigned char>(digit);
    return byte <= '9' ? byte - unsigned{'0'} : (byte | 0x20U) - unsigned{'a'} + 10U;
}

}  // namespace

void appendPercentEncoded(std::string_view text, PercentKeep keep, std::string& to) {
    const EncodingTable& table = keep == PercentKeep::Path ? kKeepingPath : kKeepingUnreserved;
    constexpr std::size_t kPiece = kBuffer / 3;
    if (text.size() > kPiece) {
        to.reserve(to.size() + encodedLength(text, table));
    }
    std::array<char, kBuffer + 1> buffer;
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, kPiece);
        char* end = buffer.data();
        for (const char character : piece) {
            const Encoded& made = encoded(table, character);
            std::memcpy(end, &made, sizeof made);
            end += made.length;
        }
        to.append(buffer.data(), end);
        text.remove_prefix(piece.size());
    }
}

bool appendPercentDecoded(std::string_view text, PlusSign plus, std::string& to) {
    if (text.size() > kBuffer) {
        const auto escapes = static_cast<std::size_t>(std::count(text.begin(), text.end(), '%'));
        to.reserve(to.size() + text.size() - std::min(2 * escapes, text.size()));
    }
    std::array<char, kBuffer> buffer;
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t length = 0;
        for (; at < text.size() && length < buffer.size(); ++at, ++length) {
            const char character = text[at];
            if (character != '%') {
                buffer[length] = character == '+' ? static_cast<char>(plus) : character;
                continue;
            }
            if (!isPercentEscape(text, at)) {
                return false;
            }
            buffer[length] =
                static_cast<char>(digitValue(text[at + 1]) << 4U | digitValue(text[at + 2]));
            at += 2;
        }
        to.append(buffer.data(), length);
    }
    return true;
}

}  // namespace quillet::platform
