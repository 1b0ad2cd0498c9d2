#include "platform/foundation/StyledText.h"

#include <string_view>

namespace quillet::platform {

namespace {

std::string_view escapeOf(char byte) {
    switch (byte) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\n':
            return "<br/>";
        case '\t':
            return "&#160;&#160;&#160;&#160;";
        default:
            return {};
    }
}

}  // namespace

std::string StyledText::htmlRepresentation() const {
    if (hasHtml()) {
        return *html;
    }
    std::string result;
    result.reserve(string.size() + string.size() / 8);
    char before = '\n';
    for (const char byte : string) {
        if (const std::string_view escape = escapeOf(byte); !escape.empty()) {
            // A line that ends in "\r\n" ends once; a lone "\r" ends a line too.
            if (byte != '\n' || before != '\r') {
                result += escape;
            }
        } else if (byte == '\r') {
            result += escapeOf('\n');
        } else if (byte == ' ' && (before == ' ' || before == '\n' || before == '\r')) {
            result += "&#160;";  // HTML takes a run of blanks for one and drops those at a start
        } else {
            result += byte;
        }
        before = byte;
    }
    return result;
}

}  // namespace quillet::platform
