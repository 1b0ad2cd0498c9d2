#include "platform/extension/HtmlText.h"

#include <algorithm>
#include <array>
#include <optional>

#include "platform/base/Ascii.h"
#include "platform/base/ByteBuffer.h"
#include "platform/base/Utf8.h"
#include "platform/plist/PropertyListXmlText.h"

namespace quillet::platform {

namespace {

// Elements that may be inside a word; all others separate words.
constexpr auto kInsideWords = std::to_array<std::string_view>(
    {"a", "abbr", "b", "code", "em", "font", "i", "mark", "s", "small", "span", "strong", "u"});
constexpr auto kInvisible = std::to_array<std::string_view>({"head", "script", "style", "title"});

template <std::size_t size>
bool contains(const std::array<std::string_view, size>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// The element name at the start of the text in lower case, or "".
std::string nameAtStart(std::string_view text) {
    std::string name;
    for (const char character : text) {
        if (!isAsciiLetter(character) && (name.empty() || !isAsciiDigit(character))) {
            break;
        }
        name += asciiLowerCase(character);
    }
    return name;
}

// Removes everything up to and including the first `end`, or everything if `end` is missing.
void skipPast(std::string_view& text, std::string_view end) {
    const std::size_t place = text.find(end);
    text.remove_prefix(place == std::string_view::npos ? text.size() : place + end.size());
}

void skipElement(std::string_view& html, const std::string& name) {
    do {
        skipPast(html, "</");
    } while (!html.empty() && nameAtStart(html) != name);
    skipPast(html, ">");
}

// Reads the markup or the lone "<" at the start of `html`.
void takeMarkup(std::string_view& html, std::string& text) {
    if (html.starts_with("<!--")) {
        skipPast(html, "-->");
        return;
    }
    const bool isEnd = html.starts_with("</");
    const std::string name = nameAtStart(html.substr(isEnd ? 2 : 1));
    if (name.empty() && !html.starts_with("<!") && !html.starts_with("<?")) {
        text += '<';
        html.remove_prefix(1);
        return;
    }
    skipPast(html, ">");
    if (!isEnd && contains(kInvisible, name)) {
        skipElement(html, name);
    }
    if (!contains(kInsideWords, name)) {
        text += ' ';
    }
}

// Reads the character reference or the lone "&" at the start of `html`.
void takeReference(std::string_view& html, std::string& text) {
    constexpr std::string_view kNoBreakSpace = "&nbsp;";
    constexpr std::uint32_t kNoBreakSpaceCode = 0xA0;
    constexpr std::size_t kLongest = 4;  // bytes of a character
    const auto reference = html.starts_with(kNoBreakSpace)
                               ? XmlReference{kNoBreakSpaceCode, kNoBreakSpace.size()}
                               : xmlReferenceAtStart(html).value_or(XmlReference{'&', 1});
    const std::uint32_t code = reference.code == kNoBreakSpaceCode ? ' ' : reference.code;
    std::array<char, kLongest> bytes{};
    text.append(bytes.data(), writeUtf8(code, bytes.data()));
    html.remove_prefix(reference.length);
}

std::string withSingleBlanks(std::string_view text) {
    std::string result;
    for (const char character : trimmed(text, kXmlSpaces)) {
        if (!isXmlSpace(character)) {
            result += character;
        } else if (!result.ends_with(' ')) {
            result += ' ';
        }
    }
    return result;
}

}  // namespace

std::string textOfHtml(std::string_view html) {
    const ByteBuffer padded(html);  // the reader of references looks ahead
    std::string_view rest = padded.view();
    std::string text;
    while (!rest.empty()) {
        const std::size_t plain = std::min(rest.find_first_of("<&"), rest.size());
        text.append(rest.substr(0, plain));
        rest.remove_prefix(plain);
        if (rest.starts_with('<')) {
            takeMarkup(rest, text);
        } else if (!rest.empty()) {
            takeReference(rest, text);
        }
    }
    return withSingleBlanks(text);
}

}  // namespace quillet::platform
