#include "platform/url/PercentEncoding.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "platform/url/UriCharacters.h"

namespace quillet::platform {

namespace {

// Texts are built in a buffer of this size and appended from there: growing a long result in place
// would first fill it with zeroes.
constexpr std::size_t kBuffer = 3072;

// What a byte becomes. All four bytes are always copied and `length` of them count, so that the
// loop has no branch that depends on the text.
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

}  // namespace

void appendPercentEncoded(std::string_view text, PercentKeep keep, std::string& to) {
    const EncodingTable& table = keep == PercentKeep::Path ? kKeepingPath : kKeepingUnreserved;
    constexpr std::size_t kPiece = kBuffer / 3;
    if (text.size() > kPiece) {
        to.reserve(to.size() + text.size());
    }
    std::array<char, kBuffer + 1> buffer;
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, kPiece);
        char* end = buffer.data();
        for (const char character : piece) {
            const Encoded& made = table[static_cast<unsigned char>(character)];
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
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at < end) {
        char* made = buffer.data();
        // Each byte made takes at least one byte of the text, so the buffer is large enough.
        for (const char* const stop = at + std::min<std::ptrdiff_t>(end - at, kBuffer);
             at < stop;) {
            if (*at != '%') {
                *made++ = *at == '+' ? static_cast<char>(plus) : *at;
                ++at;
                continue;
            }
            const int byte = escapedByte({at, static_cast<std::size_t>(end - at)});
            if (byte < 0) {
                return false;
            }
            *made++ = static_cast<char>(byte);
            at += 3;
        }
        to.append(buffer.data(), made);
    }
    return true;
}

}  // namespace quillet::platform
