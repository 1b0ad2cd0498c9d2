#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

#include "platform/plist/Number.h"
#include "platform/plist/PropertyList.h"

// The texts inside the elements of an XML property list, for its reader. HTML has the same
// references.
namespace quillet::platform {

// A character or entity reference ("&amp;", "&#x41;").
struct XmlReference {
    std::uint32_t code = 0;
    std::size_t length = 0;  // bytes from "&" to ";"
};

// The named reference at `at`, which is the place of a "&"; its length is 0 if there is none.
// ByteBuffer's padding must follow the text. Inline, because senders and identifiers are full of
// them.
inline XmlReference namedXmlReferenceAt(const char* at) noexcept {
    const auto stands = [at](std::string_view text) {
        return std::memcmp(at, text.data(), text.size()) == 0;
    };
    switch (at[1]) {
        case 'l':
            return {'<', stands("&lt;") ? 4U : 0U};
        case 'g':
            return {'>', stands("&gt;") ? 4U : 0U};
        case 'q':
            return {'"', stands("&quot;") ? 6U : 0U};
        default:
            return stands("&amp;") ? XmlReference{'&', 5}
                                   : XmlReference{'\'', stands("&apos;") ? 6U : 0U};
    }
}

// The reference at the start of the text, which begins with "&". None also for characters that XML
// does not allow. ByteBuffer's padding must follow the text.
std::optional<XmlReference> xmlReferenceAtStart(std::string_view text) noexcept;

// The first character of [start, end) that is not valid UTF-8 or that XML forbids, with the kind of
// the error. Reads up to 16 bytes after the end.
struct XmlCharacterError {
    PropertyListErrorKind kind = PropertyListErrorKind::Malformed;
    const char* place = nullptr;
};
std::optional<XmlCharacterError> firstXmlCharacterError(const char* start,
                                                        const char* end) noexcept;

inline constexpr std::string_view kXmlSpaces = " \t\r\n";

inline bool isXmlSpace(char character) noexcept {
    return character == ' ' || character == '\n' || character == '\t' || character == '\r';
}

// A decimal or 0x hexadecimal integer with an optional sign that 64 bits can hold.
std::optional<Number> integerOfXmlText(std::string_view text) noexcept;
// A decimal number or one of nan, inf and infinity in any case, with an optional sign.
std::optional<double> realOfXmlText(std::string_view text) noexcept;
// A date YYYY-MM-DDTHH:MM:SSZ as seconds since 2001-01-01 00:00:00 UTC.
std::optional<double> dateOfXmlText(std::string_view text) noexcept;
// Whether the text is base64 with white space anywhere; the padding may be missing.
bool isBase64(std::string_view text) noexcept;

}  // namespace quillet::platform
