#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/foundation/Number.h"

// The small languages inside the elements of an XML property list. Internal to its reader.
namespace quillet::platform {

// A character or entity reference ("&amp;", "&#x41;").
struct XmlReference {
    std::uint32_t code = 0;
    std::size_t length = 0;  // bytes from "&" to ";"
};

// The reference that the text, which begins with "&", starts with. None where there is none, and
// for characters that XML does not allow.
std::optional<XmlReference> xmlReferenceAtStart(std::string_view text) noexcept;

// Throws PropertyListFailure at the first byte that is no valid UTF-8 or no character that XML
// allows. Needs ByteBuffer's padding behind the text.
void checkXmlCharacters(std::string_view text);

inline bool isXmlSpace(char character) noexcept {
    return character == ' ' || character == '\n' || character == '\t' || character == '\r';
}
std::string_view trimmedXmlSpace(std::string_view text) noexcept;

// A decimal or 0x hexadecimal integer with an optional sign that 64 bits can hold.
std::optional<Number> integerOfXmlText(std::string_view text) noexcept;
// A decimal number or one of nan, inf and infinity in any case, with an optional sign.
std::optional<double> realOfXmlText(std::string_view text) noexcept;
// YYYY-MM-DDTHH:MM:SSZ as seconds since 2001-01-01 00:00:00 UTC.
std::optional<double> dateOfXmlText(std::string_view text) noexcept;
// Whether the text is base64 with white space anywhere; the padding may be missing.
bool isBase64(std::string_view text) noexcept;

}  // namespace quillet::platform
