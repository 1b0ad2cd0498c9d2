#include "platform/base/Whitespace.h"

#include <unicode/uchar.h>

#include "platform/base/Utf8.h"

namespace quillet::platform {

std::string_view trimmingWhitespaceAndNewlines(std::string_view text) noexcept {
    while (!text.empty()) {
        const Utf8Character first = firstUtf8Character(text);
        if (!u_isUWhiteSpace(first.code)) {
            break;
        }
        text.remove_prefix(first.length);
    }
    while (!text.empty()) {
        const Utf8Character last = lastUtf8Character(text);
        if (!u_isUWhiteSpace(last.code)) {
            break;
        }
        text.remove_suffix(last.length);
    }
    return text;
}

}  // namespace quillet::platform
