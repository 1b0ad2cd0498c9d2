#include "platform/base/StandardError.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <utility>

#include "platform/base/Utf8.h"

namespace quillet::platform {

namespace {

// Controls, line and paragraph separators, and characters that turn the direction of a text: those
// between these neighbours.
constexpr std::pair<std::string_view, std::string_view> kAroundDisturbing[] = {
    {"", " "},
    {"~", "\u00A0"},
    {"\u061B", "\u061D"},
    {"\u200D", "\u2010"},
    {"\u2027", "\u202F"},
    {"\u2065", "\u206A"},
};

// UTF-8 sorts like the numbers of its characters.
bool disturbs(std::string_view character) {
    const auto isBetween = [=](const auto& neighbours) {
        return neighbours.first < character && character < neighbours.second;
    };
    return std::any_of(std::begin(kAroundDisturbing), std::end(kAroundDisturbing), isBetween);
}

}  // namespace

std::string printableLine(std::string_view text) {
    // Most lines take this fast path; a hostile file causes tens of thousands of them.
    const auto isPlain = [](char character) { return character >= ' ' && character <= '~'; };
    if (std::all_of(text.begin(), text.end(), isPlain)) {
        return std::string(text);
    }
    const std::string valid = validUtf8(std::string(text));
    std::string line;
    line.reserve(valid.size());
    for (std::string_view rest = valid; !rest.empty();) {
        const std::string_view character = rest.substr(0, firstUtf8Character(rest).length);
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
