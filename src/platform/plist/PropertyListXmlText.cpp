#include "platform/plist/PropertyListXmlText.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <limits>
#include <string>
#include <system_error>

#include "platform/base/Ascii.h"
#include "platform/base/Utf8.h"
#include "platform/plist/ByteScan.h"
#include "platform/plist/PropertyListState.h"

namespace quillet::platform {

namespace {

using Kind = PropertyListErrorKind;

constexpr std::string_view kCdataStart = "<![CDATA[";
constexpr std::string_view kCdataEnd = "]]>";
constexpr std::string_view kCommentStart = "<!--";
constexpr std::string_view kCommentEnd = "-->";
constexpr std::string_view kInstructionStart = "<?";
constexpr std::string_view kInstructionEnd = "?>";

bool isXmlCharacter(std::uint32_t code) {
    if (code < 0x20) {
        return code == '\t' || code == '\n' || code == '\r';
    }
    return isUnicodeScalar(code) && code != 0xFFFE && code != 0xFFFF;
}

// Copies text with every kind of line end as one line feed, as XML demands. Returns the end of the
// copy.
char* copyWithLineFeeds(std::string_view text, char* to) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r') {
            *to++ = text[i];
        } else if (!text.substr(i + 1).starts_with('\n')) {
            *to++ = '\n';
        }
    }
    return to;
}

// Removes markup from the start of the text, which begins with `opening` and has been checked.
// Returns what is between opening and ending. They share no characters: "<!-->" does not end a
// comment.
std::string_view takeMarkup(std::string_view& text,
                            std::string_view opening,
                            std::string_view ending) {
    const std::size_t end = text.find(ending, opening.size());
    const std::string_view inside = text.substr(opening.size(), end - opening.size());
    text.remove_prefix(end + ending.size());
    return inside;
}

// Removes a CDATA section, a comment or an instruction from the text and copies what it means.
char* copyMarkup(std::string_view& text, char* to) {
    if (text.starts_with(kCdataStart)) {
        return copyWithLineFeeds(takeMarkup(text, kCdataStart, kCdataEnd), to);
    }
    if (text.starts_with(kCommentStart)) {
        takeMarkup(text, kCommentStart, kCommentEnd);
    } else {
        takeMarkup(text, kInstructionStart, kInstructionEnd);
    }
    return to;
}

// Removes what copyToMarkup has stopped at from the text and copies what it means.
char* copyEscape(std::string_view& text, char* to) {
    if (text.starts_with('&')) {
        // Named references are by far the most frequent, and mean ASCII characters.
        if (const XmlReference named = namedXmlReferenceAt(text.data()); named.length > 0) {
            text.remove_prefix(named.length);
            *to = static_cast<char>(named.code);
            return to + 1;
        }
        const auto reference = xmlReferenceAtStart(text).value_or(XmlReference{0, 1});
        text.remove_prefix(reference.length);
        return to + writeUtf8(reference.code, to);
    }
    if (text.starts_with('\r')) {
        text.remove_prefix(text.starts_with("\r\n") ? 2 : 1);
        *to = '\n';
        return to + 1;
    }
    return copyMarkup(text, to);
}

int base64Digit(char character) {
    if (character >= 'A' && character <= 'Z') {
        return character - 'A';
    }
    if (character >= 'a' && character <= 'z') {
        return character - 'a' + 26;
    }
    if (character >= '0' && character <= '9') {
        return character - '0' + 52;
    }
    return character == '+' ? 62 : character == '/' ? 63 : -1;
}

unsigned digitsAt(std::string_view text, std::size_t at, std::size_t count) {
    unsigned value = 0;
    std::from_chars(text.data() + at, text.data() + at + count, value);
    return value;
}

}  // namespace

std::optional<XmlCharacterError> firstXmlCharacterError(const char* start,
                                                        const char* end) noexcept {
    for (const char* at = findUnusual(start, end); at < end; at = findUnusual(at, end)) {
        const std::string_view rest(at, static_cast<std::size_t>(end - at));
        const Utf8Character character = firstUtf8Character(rest);
        if (character.code < 0) {
            return XmlCharacterError{Kind::InvalidText, at};
        }
        if (!isXmlCharacter(static_cast<std::uint32_t>(character.code))) {
            return XmlCharacterError{Kind::Malformed, at};
        }
        at += character.length;
    }
    return std::nullopt;
}

std::optional<XmlReference> xmlReferenceAtStart(std::string_view text) noexcept {
    if (const XmlReference named = namedXmlReferenceAt(text.data()); named.length > 0) {
        return named;
    }
    if (!text.starts_with("&#")) {
        return std::nullopt;
    }
    const bool hexadecimal = text.substr(2).starts_with('x');
    const char* digits = text.data() + (hexadecimal ? 3 : 2);
    const char* end = text.data() + text.size();
    std::uint32_t code = 0;
    const auto parsed = std::from_chars(digits, end, code, hexadecimal ? 16 : 10);
    if (parsed.ec != std::errc() || parsed.ptr == end || *parsed.ptr != ';' ||
        !isXmlCharacter(code)) {
        return std::nullopt;
    }
    return XmlReference{code, static_cast<std::size_t>(parsed.ptr + 1 - text.data())};
}

void appendUnescapedXml(std::string_view text, std::string& result) {
    // No escape is shorter than the character it means.
    constexpr std::size_t kWrittenBeyond = 16;
    const std::size_t start = result.size();
    result.resize(start + text.size() + kWrittenBeyond);
    char* to = result.data() + start;
    while (!text.empty()) {
        const auto found = static_cast<std::size_t>(copyToMarkup(text.data(), to) - text.data());
        const std::size_t plain = std::min(found, text.size());
        to += plain;
        text.remove_prefix(plain);
        if (!text.empty()) {
            to = copyEscape(text, to);
        }
    }
    result.resize(static_cast<std::size_t>(to - result.data()));
}

std::optional<Number> integerOfXmlText(std::string_view text) noexcept {
    constexpr auto kSignedLimit =
        static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    text = trimmed(text, kXmlSpaces);
    const bool negative = takeSign(text);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal) {
        text.remove_prefix(2);
    }
    const char* end = text.data() + text.size();
    std::uint64_t magnitude = 0;
    const auto parsed = std::from_chars(text.data(), end, magnitude, hexadecimal ? 16 : 10);
    if (parsed.ec != std::errc() || parsed.ptr != end ||
        (negative && magnitude > kSignedLimit + 1)) {
        return std::nullopt;
    }
    if (negative) {
        return Number(static_cast<std::int64_t>(0 - magnitude));
    }
    return magnitude > kSignedLimit ? Number(magnitude)
                                    : Number(static_cast<std::int64_t>(magnitude));
}

std::optional<double> realOfXmlText(std::string_view text) noexcept {
    text = trimmed(text, kXmlSpaces);
    std::string_view number = text;
    if (const auto value = realValueAtStartOfText(number)) {
        return number.empty() ? value : std::nullopt;
    }
    const bool negative = takeSign(text);
    if (equalsIgnoringAsciiCase(text, "nan")) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    if (equalsIgnoringAsciiCase(text, "inf") || equalsIgnoringAsciiCase(text, "infinity")) {
        const double infinity = std::numeric_limits<double>::infinity();
        return negative ? -infinity : infinity;
    }
    return std::nullopt;
}

std::optional<double> dateOfXmlText(std::string_view text) noexcept {
    constexpr std::string_view kShape = "0000-00-00T00:00:00Z";
    text = trimmed(text, kXmlSpaces);
    const auto fits = [](char character, char shape) {
        return shape == '0' ? isAsciiDigit(character) : character == shape;
    };
    if (!std::equal(text.begin(), text.end(), kShape.begin(), kShape.end(), fits)) {
        return std::nullopt;
    }
    constexpr std::chrono::sys_days kStart = std::chrono::January / 1 / 2001;
    const std::chrono::year_month_day date{
        std::chrono::year(static_cast<int>(digitsAt(text, 0, 4))),
        std::chrono::month(digitsAt(text, 5, 2)),
        std::chrono::day(digitsAt(text, 8, 2))};
    const unsigned hour = digitsAt(text, 11, 2);
    const unsigned minute = digitsAt(text, 14, 2);
    const unsigned second = digitsAt(text, 17, 2);
    if (!date.ok() || hour > 23 || minute > 59 || second > 59) {
        return std::nullopt;
    }
    const std::int64_t days = (std::chrono::sys_days(date) - kStart).count();
    return static_cast<double>(((days * 24 + hour) * 60 + minute) * 60 + second);
}

bool isBase64(std::string_view text) noexcept {
    std::size_t digits = 0;
    bool padded = false;
    for (const char character : text) {
        if (character == '=') {
            padded = true;
        } else if (!isXmlSpace(character)) {
            if (padded || base64Digit(character) < 0) {
                return false;
            }
            ++digits;
        }
    }
    return digits % 4 != 1;
}

std::string decodedBase64(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char character : text) {
        const int digit = base64Digit(character);
        if (digit < 0) {
            continue;
        }
        bits = (bits << 6U) | static_cast<std::uint32_t>(digit);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>((bits >> count) & 0xFFU);
        }
    }
    return bytes;
}

}  // namespace quillet::platform
