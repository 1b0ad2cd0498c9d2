#include "platform/base/StandardError.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>

#include "platform/base/Utf8.h"

namespace quillet::platform {

namespace {

// Line and paragraph separators, and what turns the direction of a text.
constexpr std::uint32_t kDisturbing[] = {0x061C,
                                         0x200E,
                                         0x200F,
                                         0x2028,
                                         0x2029,
                                         0x202A,
                                         0x202B,
                                         0x202C,
                                         0x202D,
                                         0x202E,
                                         0x2066,
                                         0x2067,
                                         0x2068,
                                         0x2069};

// The number of a character of valid UTF-8.
std::uint32_t codeOf(std::string_view character) {
    const auto lead = static_cast<unsigned char>(character[0]);
    std::uint32_t code = character.size() == 1 ? lead : lead & (0x3FU >> (character.size() - 1));
    for (const char byte : character.substr(1)) {
        code = (code << 6U) | (static_cast<unsigned char>(byte) & 0x3FU);
    }
    return code;
}

bool disturbs(std::string_view character) {
    const std::uint32_t code = codeOf(character);
    const bool isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
    return isControl ||
           std::find(std::begin(kDisturbing), std::end(kDisturbing), code) != std::end(kDisturbing);
}

}  // namespace

std::string printableLine(std::string_view text) {
    // Most lines are plain, and a hostile file makes tens of thousands of them.
    const auto isPlain = [](char character) { return character >= ' ' && character <= '~'; };
    if (std::all_of(text.begin(), text.end(), isPlain)) {
        return std::string(text);
    }
    const std::string valid = validUtf8(std::string(text));
    std::string line;
    line.reserve(valid.size());
    for (std::string_view rest = valid; !rest.empty();) {
        const std::string_view character = rest.substr(0, utf8SequenceLength(rest));
        rest.remove_prefix(character.size());
        line += disturbs(character) ? " " : character;
    }
    return line;
}

void writeErrorLine(std::string_view line) {
    const std::string printed = printableLine(line) + '\n';
    std::fwrite(printed.data(), 1, printed.size(), stderr);
}

}  // namespace quillet::platform
