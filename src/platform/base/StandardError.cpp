#include "platform/base/StandardError.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <utility>

#include "platform/base/Utf8.h"

namespace quillet::platform {

namespace {

// First and last of each run: controls, line and paragraph separators, and what turns the direction
// of a text.
constexpr std::pair<std::string_view, std::string_view> kDisturbing[] = {
    {{}, "\x1F"},
    {"\x7F", "\u009F"},
    {"\u061C", "\u061C"},
    {"\u200E", "\u200F"},
    {"\u2028", "\u202E"},
    {"\u2066", "\u2069"},
};

// UTF-8 sorts like the numbers of its characters.
bool disturbs(std::string_view character) {
    return std::any_of(std::begin(kDisturbing), std::end(kDisturbing), [=](const auto& run) {
        return run.first <= character && character <= run.second;
    });
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
