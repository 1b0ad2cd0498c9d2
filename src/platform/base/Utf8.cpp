#include "platform/base/Utf8.h"

#include <cstring>

namespace quillet::platform {

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0U) == 0x80;
}

std::size_t lengthByLeadByte(unsigned char lead) {
    if (lead >= 0xF0) {
        return lead < 0xF5 ? 4 : 0;
    }
    if (lead >= 0xE0) {
        return 3;
    }
    return lead >= 0xC2 ? 2 : 0;
}

// Whether the second byte of a sequence may follow the first: it tells overlong forms, surrogates
// and numbers above U+10FFFF.
bool maySecondFollow(unsigned char lead, unsigned char second) {
    switch (lead) {
        case 0xE0:
            return second >= 0xA0;
        case 0xED:
            return second < 0xA0;
        case 0xF0:
            return second >= 0x90;
        case 0xF4:
            return second < 0x90;
        default:
            return true;
    }
}

// Bytes of ASCII that the text starts with, looked at in words; where a text is shorter than the
// last word, the words overlap.
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

}  // namespace

bool isUnicodeScalar(std::uint32_t code) noexcept {
    return code < 0xD800 || (code > 0xDFFF && code <= 0x10FFFF);
}

std::size_t writeUtf8(std::uint32_t code, char* at) noexcept {
    if (!isUnicodeScalar(code)) {
        code = kReplacement;
    }
    if (code < 0x80) {
        *at = static_cast<char>(code);
        return 1;
    }
    const std::size_t length = code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
    for (std::size_t i = length - 1; i > 0; --i) {
        at[i] = static_cast<char>(0x80U | (code & 0x3FU));
        code >>= 6U;
    }
    const std::uint32_t lead = length == 2 ? 0xC0 : length == 3 ? 0xE0 : 0xF0;
    *at = static_cast<char>(lead | code);
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
        const bool leads = code >= 0xD800 && code < 0xDC00 && i + 1 < units.count();
        const std::uint32_t next = leads ? units[i + 1] : 0;
        if (next >= 0xDC00 && next < 0xE000) {
            code = 0x10000 + ((code - 0xD800) << 10U) + (next - 0xDC00);
            ++i;
        }
        at += writeUtf8(code, at);
    }
    text.resize(static_cast<std::size_t>(at - text.data()));
}

std::size_t utf8SequenceLength(std::string_view text) noexcept {
    if (text.empty()) {
        return 0;
    }
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80) {
        return 1;
    }
    const std::size_t length = lengthByLeadByte(lead);
    if (length == 0 || length > text.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (!isContinuation(static_cast<unsigned char>(text[i]))) {
            return 0;
        }
    }
    return maySecondFollow(lead, static_cast<unsigned char>(text[1])) ? length : 0;
}

std::optional<std::size_t> firstInvalidUtf8(std::string_view text) noexcept {
    std::size_t at = 0;
    while (at < text.size()) {
        if (static_cast<unsigned char>(text[at]) < 0x80) {
            at += asciiLength(text.substr(at));
            continue;
        }
        const std::size_t length = utf8SequenceLength(text.substr(at));
        if (length == 0) {
            return at;
        }
        at += length;
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

}  // namespace quillet::platform
