#include "message/BodyText.h"

#include <algorithm>
#include <array>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include "platform/base/Ascii.h"
#include "platform/base/Utf8.h"
#include "platform/extension/HtmlText.h"

namespace quillet::message {

namespace {

using platform::equalsIgnoringAsciiCase;

constexpr std::array<std::string_view, 15> kBlocks{"br",
                                                   "p",
                                                   "div",
                                                   "tr",
                                                   "li",
                                                   "h1",
                                                   "h2",
                                                   "h3",
                                                   "h4",
                                                   "h5",
                                                   "pre",
                                                   "hr",
                                                   "ul",
                                                   "ol",
                                                   "blockquote"};

bool isCharset(const std::string& charset, std::initializer_list<std::string_view> names) {
    return std::any_of(names.begin(), names.end(), [&charset](std::string_view name) {
        return equalsIgnoringAsciiCase(charset, name);
    });
}

// Many programs name a charset and write the larger one that holds it.
std::string largerCharset(const std::string& charset) {
    if (isCharset(charset, {"", "us-ascii", "ascii", "iso-8859-1", "latin1"})) {
        return "windows-1252";
    }
    return isCharset(charset, {"gb2312", "gbk", "x-gbk"}) ? "gb18030" : charset;
}

bool isKnown(const std::string& charset) {
    UErrorCode failure = U_ZERO_ERROR;
    UConverter* const converter = ucnv_open(charset.c_str(), &failure);
    ucnv_close(converter);
    return U_SUCCESS(failure) != 0;
}

std::string converted(std::string_view bytes, const std::string& charset) {
    const std::string larger = largerCharset(charset);
    std::string text;
    icu::UnicodeString(bytes.data(),
                       static_cast<std::int32_t>(bytes.size()),
                       isKnown(larger) ? larger.c_str() : "windows-1252")
        .toUTF8String(text);
    return text;
}

std::string withPlainLineEnds(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char character = text[at];
        const bool endsLine = character == '\r';
        if (endsLine && text.substr(at + 1, 1) == "\n") {
            continue;
        }
        const bool isControl =
            (character >= 0 && character < ' ' && character != '\n' && character != '\t') ||
            character == '\x7f';
        plain += endsLine ? '\n' : isControl ? ' ' : character;
    }
    return plain;
}

// Whether a line ends at the tag whose "<" is before `tag`.
bool endsLine(std::string_view tag) {
    tag = platform::trimmedStart(tag, "/");
    const auto* const end = std::find_if_not(tag.begin(), tag.end(), platform::isAsciiAlphanumeric);
    const std::string_view name = tag.substr(0, static_cast<std::size_t>(end - tag.begin()));
    return std::any_of(kBlocks.begin(), kBlocks.end(), [name](std::string_view block) {
        return equalsIgnoringAsciiCase(name, block);
    });
}

}  // namespace

std::string utf8Of(std::string_view bytes, const std::string& charset) {
    const bool mayBeUtf8 = isCharset(charset, {"", "us-ascii", "ascii", "utf-8", "utf8"});
    const bool isUtf8 = mayBeUtf8 && !platform::firstInvalidUtf8(bytes);
    return withPlainLineEnds(isUtf8 ? std::string(bytes)
                                    : platform::validUtf8(converted(bytes, charset)));
}

std::string plainTextOfHtml(std::string_view html) {
    std::string text;
    const auto addLine = [&text](std::string_view line) {
        const std::string words = platform::textOfHtml(line);
        const bool isGap = line.starts_with("</p") || line.starts_with("<br");
        // Empty lines part paragraphs, one at a time.
        if (!words.empty() || (isGap && !text.empty() && !text.ends_with("\n\n"))) {
            text += words + '\n';
        }
    };
    std::size_t start = 0;
    constexpr std::size_t kLongestTag = 16;
    for (std::size_t at = html.find('<'); at != std::string_view::npos;
         at = html.find('<', at + 1)) {
        if (endsLine(html.substr(at + 1, kLongestTag))) {
            addLine(html.substr(start, at - start));
            start = at;
        }
    }
    addLine(html.substr(start));
    text.erase(text.find_last_not_of('\n') + 1);
    return text;
}

}  // namespace quillet::message
