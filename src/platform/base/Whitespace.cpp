#include "platform/base/Whitespace.h"

#include <algorithm>
#include <iterator>

namespace quillet::platform {

namespace {

constexpr std::string_view kSpaces[] = {
    " ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\u0085", "\u00A0", "\u1680",
    "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
    "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000",
};

}  // namespace

std::string_view trimmingWhitespaceAndNewlines(std::string_view text) noexcept {
    const auto* const none = std::end(kSpaces);
    for (;;) {
        const auto* const space =
            std::find_if(std::begin(kSpaces), none, [text](std::string_view candidate) {
                return text.starts_with(candidate);
            });
        if (space == none) {
            break;
        }
        text.remove_prefix(space->size());
    }
    for (;;) {
        const auto* const space =
            std::find_if(std::begin(kSpaces), none, [text](std::string_view candidate) {
                return text.ends_with(candidate);
            });
        if (space == none) {
            return text;
        }
        text.remove_suffix(space->size());
    }
}

}  // namespace quillet::platform
