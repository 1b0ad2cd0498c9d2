#include "mailhost/accounts/AccountAddress.h"

#include <unicode/uchar.h>

#include "platform/base/Utf8.h"

namespace quillet::mailhost {

namespace {

constexpr std::size_t kLongestAddress = 200;

bool hasOnlyAddressCharacters(std::string_view text) {
    while (!text.empty()) {
        const platform::Utf8Character character = platform::firstUtf8Character(text);
        // The second property covers control characters and those without any picture.
        if (character.code < 0 || character.code == '/' || u_isUWhiteSpace(character.code) != 0 ||
            u_isprint(character.code) == 0) {
            return false;
        }
        text.remove_prefix(character.length);
    }
    return true;
}

}  // namespace

bool isAccountAddress(std::string_view text) {
    const std::size_t at = text.find('@');
    return text.size() <= kLongestAddress && at != std::string_view::npos && at > 0 &&
           at + 1 < text.size() && text.find('@', at + 1) == std::string_view::npos &&
           text.front() != '.' && hasOnlyAddressCharacters(text);
}

}  // namespace quillet::mailhost
