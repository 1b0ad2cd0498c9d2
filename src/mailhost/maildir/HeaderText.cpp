#include "mailhost/maildir/HeaderText.h"

#include <algorithm>
#include <glib.h>
#include <memory>
#include <optional>

#include "platform/base/Ascii.h"
#include "platform/base/StandardError.h"
#include "platform/base/Utf8.h"

namespace quillet::mailhost {

namespace {

constexpr std::string_view kEllipsis = "\u2026";

// What the names of charsets consist of. Others never reach the system, which looks for files.
bool isCharsetName(std::string_view charset) {
    constexpr std::size_t kLongestName = 40;
    const auto isPlain = [](char character) {
        return platform::isAsciiAlphanumeric(character) ||
               std::string_view("-_.:+").find(character) != std::string_view::npos;
    };
    return !charset.empty() && charset.size() <= kLongestName &&
           std::all_of(charset.begin(), charset.end(), isPlain);
}

// `bytes` in UTF-8; none if they are not in `charset`. A character that is cut off at the end is
// left out.
std::optional<std::string> fromCharset(std::string_view bytes, const std::string& charset) {
    if (!isCharsetName(charset)) {
        return std::nullopt;
    }
    gsize read = 0;
    gsize written = 0;
    const std::unique_ptr<char, void (*)(void*)> text(g_convert(bytes.data(),
                                                                static_cast<gssize>(bytes.size()),
                                                                "UTF-8",
                                                                charset.c_str(),
                                                                &read,
                                                                &written,
                                                                nullptr),
                                                      g_free);
    return text ? std::optional(std::string(text.get(), written)) : std::nullopt;
}

// Without a character that the limit has cut in two, which would make valid text look invalid.
std::string_view cutAtCharacter(std::string_view text, std::size_t longest) {
    constexpr std::size_t kMostContinuationBytes = 3;
    if (text.size() <= longest) {
        return text;
    }
    const auto continues = [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
    };
    std::size_t end = longest;
    while (end > 0 && longest - end < kMostContinuationBytes && continues(text[end])) {
        --end;
    }
    return text.substr(0, end);
}

std::string withSingleBlanks(std::string text) {
    const auto areBlanks = [](char one, char other) { return one == ' ' && other == ' '; };
    text.erase(std::unique(text.begin(), text.end(), areBlanks), text.end());
    return text;
}

}  // namespace

std::string fieldText(std::string_view raw, const std::string& charset, std::size_t longest) {
    const std::string_view cut = cutAtCharacter(raw, longest);
    std::string text(cut);
    if (platform::firstInvalidUtf8(text)) {
        const std::optional<std::string> converted = fromCharset(cut, charset);
        text = converted ? *converted : fromCharset(cut, "ISO-8859-1").value_or("");
        text = platform::validUtf8(std::move(text));
    }
    const auto breaksText = [](char character) {
        return character == '\0' || character == '\r' || character == '\n';
    };
    std::replace_if(text.begin(), text.end(), breaksText, ' ');
    return text;
}

std::string shownText(std::string_view text, std::size_t longest) {
    const std::string line = withSingleBlanks(platform::printableLine(text));
    const std::string_view shown = platform::trimmingWhitespaceAndNewlines(line);
    if (shown.size() <= longest) {
        return std::string(shown);
    }
    return std::string(cutAtCharacter(shown, longest - kEllipsis.size())).append(kEllipsis);
}

}  // namespace quillet::mailhost
