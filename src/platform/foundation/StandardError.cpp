#include "platform/foundation/StandardError.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "platform/foundation/Utf8.h"

namespace quillet::platform {

namespace {

// Line and paragraph separators, and what turns the direction of a text.
constexpr std::string_view kDisturbing[] = {
    "\u061C",
    "\u200E",
    "\u200F",
    "\u2028",
    "\u2029",
    "\u202A",
    "\u202B",
    "\u202C",
    "\u202D",
    "\u202E",
    "\u2066",
    "\u2067",
    "\u2068",
    "\u2069",
};

bool isControl(std::string_view character) {
    const auto lead = static_cast<unsigned char>(character[0]);
    const auto last = static_cast<unsigned char>(character.back());
    return lead < 0x20 || lead == 0x7F || (lead == 0xC2 && last < 0xA0);
}

bool disturbs(std::string_view character) {
    return isControl(character) ||
           std::find(std::begin(kDisturbing), std::end(kDisturbing), character) !=
               std::end(kDisturbing);
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
