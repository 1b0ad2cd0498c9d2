#include "platform/base/Whitespace.h"

namespace quillet::platform {

namespace {

constexpr std::string_view kSpaces[] = {
    " ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\u0085", "\u00A0", "\u1680",
    "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
    "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000",
};

}  // namespace

std::string_view trimmingWhitespaceAndNewlines(std::string_view text) noexcept {
    for (std::size_t before = text.size() + 1; text.size() < before;) {
        before = text.size();
        for (const std::string_view space : kSpaces) {
            text.remove_prefix(text.starts_with(space) ? space.size() : 0);
            text.remove_suffix(text.ends_with(space) ? space.size() : 0);
        }
    }
    return text;
}

}  // namespace quillet::platform
