#include "platform/base/Utf8.h"

#include <algorithm>
#include <cstring>
#include <unicode/uchar.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

// ICU's macros narrow bytes that they have widened to int.
#pragma GCC diagnostic ignored "-Wconversion"

namespace quillet::platform {

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

// The number of ASCII bytes that the text starts with. The last word may overlap the one before.
std::size_t asciiLength(std::string_view text) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    constexpr std::size_t kWord = sizeof kHighBits;
    const auto highBitsAt = [&](std::size_t at) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + at, kWord);
        return word & kHighBits;
    };
    std::size_t at = 0;
    while (text.size() - at >= kWord && highBitsAt(at) == 0) {
        at += kWord;
    }
    if (text.size() >= kWord && text.size() - at < kWord && highBitsAt(text.size() - kWord) == 0) {
        return text.size();
    }
    while (at < text.size() && static_cast<unsigned char>(text[at]) < 0x80) {
        ++at;
    }
    return at;
}

class Utf16Units {
public:
    Utf16Units(std::string_view bytes, std::endian order)
        : bytes_(bytes), high_(order == std::endian::big ? 0 : 1) {}

    std::size_t count() const { return bytes_.size() / 2; }
    std::uint32_t operator[](std::size_t index) const {
        const auto high = static_cast<unsigned char>(bytes_[2 * index + high_]);
        const auto low = static_cast<unsigned char>(bytes_[2 * index + 1 - high_]);
        return (std::uint32_t{high} << 8U) | low;
    }

private:
    std::string_view bytes_;
    std::size_t high_;
};

Utf8Character characterOf(std::int32_t code, std::size_t length) {
    return code < 0 ? Utf8Character() : Utf8Character{code, length};
}

}  // namespace

bool isUnicodeScalar(std::uint32_t code) noexcept {
    return !U_IS_SURROGATE(code) && code <= 0x10FFFF;
}

std::size_t writeUtf8(std::uint32_t code, char* at) noexcept {
    if (!isUnicodeScalar(code)) {
        code = kReplacement;
    }
    std::size_t length = 0;
    U8_APPEND_UNSAFE(at, length, code);
    return length;
}

void appendUtf16AsUtf8(std::string_view bytes, std::endian order, std::string& text) {
    // A unit becomes three bytes at most, a pair of units four.
    constexpr std::size_t kMostBytesPerUnit = 3;
    const Utf16Units units(bytes, order);
    const std::size_t start = text.size();
    text.resize(start + units.count() * kMostBytesPerUnit);
    char* at = text.data() + start;
    for (std::size_t i = 0; i < units.count(); ++i) {
        std::uint32_t code = units[i];
        if (code < 0x80) {
            *at++ = static_cast<char>(code);
            continue;
        }
        const std::uint32_t next = U16_IS_LEAD(code) && i + 1 < units.count() ? units[i + 1] : 0;
        if (U16_IS_TRAIL(next)) {
            code = static_cast<std::uint32_t>(U16_GET_SUPPLEMENTARY(code, next));
            ++i;
        }
        at += writeUtf8(code, at);
    }
    text.resize(static_cast<std::size_t>(at - text.data()));
}

Utf8Character firstUtf8Character(std::string_view text) noexcept {
    const char* const bytes = text.data();
    std::size_t length = 0;
    std::int32_t code = 0;
    U8_NEXT(bytes, length, text.size(), code);
    return characterOf(code, length);
}

Utf8Character lastUtf8Character(std::string_view text) noexcept {
    const auto size = static_cast<std::int32_t>(std::min<std::size_t>(text.size(), U8_MAX_LENGTH));
    const char* const start = text.data() + text.size() - size;
    std::int32_t at = size;
    std::int32_t code = 0;
    U8_PREV(start, 0, at, code);
    return characterOf(code, static_cast<std::size_t>(size - at));
}

std::optional<std::size_t> firstInvalidUtf8(std::string_view text) noexcept {
    std::size_t at = 0;
    while (at < text.size()) {
        if (static_cast<unsigned char>(text[at]) < 0x80) {
            at += asciiLength(text.substr(at));
            continue;
        }
        const Utf8Character character = firstUtf8Character(text.substr(at));
        if (character.code < 0) {
            return at;
        }
        at += character.length;
    }
    return std::nullopt;
}

std::string validUtf8(std::string text) {
    std::optional<std::size_t> invalid = firstInvalidUtf8(text);
    if (!invalid) {
        return text;
    }
    constexpr std::string_view kReplacementText = "\xEF\xBF\xBD";
    std::string valid;
    std::string_view rest = text;
    for (; invalid; invalid = firstInvalidUtf8(rest)) {
        valid.append(rest.substr(0, *invalid)).append(kReplacementText);
        rest.remove_prefix(*invalid + 1);
    }
    return valid.append(rest);
}

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
