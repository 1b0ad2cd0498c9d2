#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/foundation/Number.h"
#include "platform/foundation/PropertyList.h"

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

// The place of the first character of [start, end) that is no valid UTF-8 or that XML forbids, with
// the kind of that error; none where all is well. Reads up to 16 bytes behind the end.
struct XmlCharacterError {
    PropertyListErrorKind kind = PropertyListErrorKind::Malformed;
    const char* place = nullptr;
};
std::optional<XmlCharacterError> firstXmlCharacterError(const char* start,
                                                        const char* end) noexcept;

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
