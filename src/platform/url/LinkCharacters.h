#pragma once

#include <cstddef>
#include <string_view>

namespace quillet::platform {

// What a character is to the link that it stands in.
enum class LinkRole {
    Stop,         // no part of any link: blanks, quotes, angle brackets, CJK punctuation …
    Plain,        // part of the link
    Punctuation,  // part of the link, except at its end
    Emphasis,     // "*", "_" and "~": likewise where the same one stands before the link
    Opening,      // a bracket; not at the end either
    Closing,      // part of the link where it closes a bracket of the link, else its end
};

// A character of a UTF-8 text and the number of its bytes. Bytes that are not UTF-8 are stops.
struct LinkCharacter {
    LinkRole role = LinkRole::Stop;
    char32_t code = 0;
    std::size_t length = 1;
};

// The character at `at`, which lies in the text.
LinkCharacter linkCharacterAt(std::string_view text, std::size_t at);
// The character that ends at `end`, which is not 0.
LinkCharacter linkCharacterBefore(std::string_view text, std::size_t end);

// Whether the character is of a script that sets no space between a word and what belongs to the
// sentence: what touches an address in other letters may then be the next word.
bool isWrittenWithoutSpaces(char32_t code);
// Whether the character is no letter but a sign: arrows, faces, "™", "+".
bool isSymbol(char32_t code);

}  // namespace quillet::platform
