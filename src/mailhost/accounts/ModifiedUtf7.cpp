#include "mailhost/accounts/ModifiedUtf7.h"

#include <algorithm>
#include <memory>
#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>
#include <unicode/unistr.h>

#include "platform/base/Ascii.h"

namespace quillet::mailhost {

namespace {

// A mailbox name has at most a few hundred bytes; ICU counts in 32 bits.
constexpr std::size_t kLongestName = 1 << 20;

using Converter = std::unique_ptr<UConverter, decltype(&ucnv_close)>;

Converter openConverter() {
    UErrorCode failure = U_ZERO_ERROR;
    Converter converter(ucnv_open("IMAP-mailbox-name", &failure), &ucnv_close);
    if (converter) {
        ucnv_setToUCallBack(
            converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &failure);
    }
    return converter;
}

}  // namespace

std::string encodeModifiedUtf7(std::string_view name) {
    const Converter converter = openConverter();
    if (!converter || name.size() > kLongestName) {
        return std::string(name);
    }
    const icu::UnicodeString text = icu::UnicodeString::fromUTF8(
        icu::StringPiece(name.data(), static_cast<std::int32_t>(name.size())));
    UErrorCode failure = U_ZERO_ERROR;
    std::string encoded(static_cast<std::size_t>(8 * text.length() + 8), '\0');
    const std::int32_t length = text.extract(
        encoded.data(), static_cast<std::int32_t>(encoded.size()), converter.get(), failure);
    encoded.resize(U_SUCCESS(failure) ? static_cast<std::size_t>(length) : 0);
    return encoded;
}

std::optional<std::string> decodeModifiedUtf7(std::string_view text) {
    const Converter converter = openConverter();
    if (!converter || !platform::isAsciiText(text) || text.size() > kLongestName) {
        return std::nullopt;
    }
    UErrorCode failure = U_ZERO_ERROR;
    const icu::UnicodeString decoded(
        text.data(), static_cast<std::int32_t>(text.size()), converter.get(), failure);
    std::string name;
    decoded.toUTF8String(name);
    const bool isPrintable = std::all_of(name.begin(), name.end(), [](char character) {
        return static_cast<unsigned char>(character) >= 0x20 && character != 0x7F;
    });
    if (U_FAILURE(failure) || !isPrintable || encodeModifiedUtf7(name) != text) {
        return std::nullopt;
    }
    return name;
}

}  // namespace quillet::mailhost
