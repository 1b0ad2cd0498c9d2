#pragma once

#include <cstddef>
#include <string_view>

namespace quillet::platform {

// What a character means to the link that contains it.
enum class LinkRole {
    Stop,         // never part of a link: blanks, quotes, angle brackets, CJK punctuation …
    Plain,        // part of the link
    Punctuation,  // part of the link, except at its end
    Emphasis,     // "*", "_" and "~": likewise if the same one precedes the link
    Opening,      // a bracket: part of the link, except at its end
    Closing,      // part of the link if it closes a bracket of the link, else the link's end
};

// A character of a UTF-8 text and the number of its bytes. Bytes that are not UTF-8 are stops.
struct LinkCharacter {
    LinkRole role = LinkRole::Stop;
    char32_t code = 0;
    std::size_t length = 1;
};

// The character at `at`, which is less than the text's size.
LinkCharacter linkCharacterAt(std::string_view text, std::size_t at);
// The character that ends at `end`, which is not 0.
LinkCharacter linkCharacterBefore(std::string_view text, std::size_t end);

// Whether the character belongs to a script without spaces between words. A character of such a
// script next to an address in other letters may be the next word of the sentence.
bool isWrittenWithoutSpaces(char32_t code);
// Whether the character is a symbol: an arrow, a face, "™", "+".
bool isSymbol(char32_t code);

}  // namespace quillet::platform
