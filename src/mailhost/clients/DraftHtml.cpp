#include "mailhost/clients/DraftHtml.h"

#include <algorithm>
#include <array>
#include <optional>

#include "platform/base/Ascii.h"
#include "platform/extension/HtmlText.h"

namespace quillet::mailhost {

namespace {

constexpr std::string_view kHtmlBlanks = " \t\r\n\f";
constexpr auto kBlocks = std::to_array<std::string_view>({"blockquote",
                                                          "div",
                                                          "h1",
                                                          "h2",
                                                          "h3",
                                                          "h4",
                                                          "h5",
                                                          "h6",
                                                          "hr",
                                                          "li",
                                                          "ol",
                                                          "p",
                                                          "pre",
                                                          "table",
                                                          "tbody",
                                                          "thead",
                                                          "tr",
                                                          "ul"});
constexpr auto kInline = std::to_array<std::string_view>(
    {"b", "br", "code", "em", "i", "s", "small", "span", "strong", "sub", "sup", "td", "th", "u"});
// Elements whose contents are not text of the message.
constexpr auto kHidden = std::to_array<std::string_view>({"head",
                                                          "iframe",
                                                          "math",
                                                          "noembed",
                                                          "noframes",
                                                          "noscript",
                                                          "object",
                                                          "script",
                                                          "select",
                                                          "style",
                                                          "svg",
                                                          "template",
                                                          "textarea",
                                                          "title",
                                                          "xmp"});

template <std::size_t size>
bool isAmong(const std::array<std::string_view, size>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// A run of text, or a tag.
struct HtmlToken {
    bool isTag = false;
    bool isEnd = false;
    std::string name;           // of a tag, in lower case; empty: a comment or a declaration
    std::string_view contents;  // the text, or the attributes
};

std::string nameIn(std::string_view text) {
    std::string name;
    for (const char character : text) {
        if (!platform::isAsciiAlphanumeric(character)) {
            break;
        }
        name += platform::asciiLowerCase(character);
    }
    return name;
}

std::string_view takeUpTo(std::string_view& html, std::size_t end, std::size_t mark) {
    const std::string_view taken = html.substr(0, end);
    html.remove_prefix(std::min(end, html.size()));
    html.remove_prefix(std::min(mark, html.size()));
    return taken;
}

// The place of the ">" that ends a tag; quotes hold others.
std::size_t endOfTag(std::string_view tag) {
    char quote = '\0';
    for (std::size_t at = 0; at < tag.size(); ++at) {
        const char character = tag[at];
        if (quote != '\0') {
            quote = character == quote ? '\0' : quote;
        } else if (character == '>') {
            return at;
        } else if (character == '"' || character == '\'') {
            quote = character;
        }
    }
    return tag.size();
}

HtmlToken takeToken(std::string_view& html) {
    if (html.front() != '<') {
        return {false, false, {}, takeUpTo(html, html.find('<'), 0)};
    }
    if (html.starts_with("<!--")) {
        takeUpTo(html, html.find("-->"), 3);
        return {true, false, {}, {}};
    }
    const bool isEnd = html.starts_with("</");
    const std::string_view rest = html.substr(isEnd ? 2 : 1);
    std::string name = nameIn(rest);
    if (name.empty() && !html.starts_with("<!") && !html.starts_with("<?") && !isEnd) {
        return {false, false, {}, takeUpTo(html, 1, 0)};
    }
    html = rest.substr(name.size());
    const std::string_view attributes = takeUpTo(html, endOfTag(html), 1);
    return {true, isEnd, std::move(name), attributes};
}

// Skips what is within an element, and its end.
void skipContents(std::string_view& html, const std::string& name) {
    while (!html.empty()) {
        takeUpTo(html, html.find("</"), 0);
        const bool isItsEnd = nameIn(html.substr(std::min<std::size_t>(2, html.size()))) == name;
        takeUpTo(html, isItsEnd ? html.find('>') : 2, isItsEnd ? 1 : 0);
        if (isItsEnd) {
            return;
        }
    }
}

// Calls `use` with each token that is neither hidden nor within a hidden element.
template <typename Use>
void forEachToken(std::string_view html, Use use) {
    while (!html.empty()) {
        const HtmlToken token = takeToken(html);
        if (token.isTag && !token.isEnd && isAmong(kHidden, token.name)) {
            skipContents(html, token.name);
        } else if (!token.isTag || !token.name.empty()) {
            use(token);
        }
    }
}

std::string_view takeValue(std::string_view& attributes) {
    attributes = platform::trimmedStart(attributes, kHtmlBlanks);
    if (!attributes.starts_with('=')) {
        return {};
    }
    attributes = platform::trimmedStart(attributes.substr(1), kHtmlBlanks);
    if (attributes.starts_with('"') || attributes.starts_with('\'')) {
        const char quote = attributes.front();
        attributes.remove_prefix(1);
        return takeUpTo(attributes, attributes.find(quote), 1);
    }
    return takeUpTo(attributes, attributes.find_first_of(kHtmlBlanks), 0);
}

// The address of a link if it is one of a web page.
std::optional<std::string> webAddressIn(std::string_view attributes) {
    constexpr std::string_view kEndsOfName = " \t\r\n\f=/";
    for (;;) {
        attributes = platform::trimmedStart(attributes, " \t\r\n\f/");
        if (attributes.empty()) {
            return std::nullopt;
        }
        const std::string_view name = takeUpTo(
            attributes, std::max<std::size_t>(1, attributes.find_first_of(kEndsOfName)), 0);
        const std::string_view value = takeValue(attributes);
        if (platform::equalsIgnoringAsciiCase(name, "href")) {
            const bool isWeb = platform::equalsIgnoringAsciiCase(value.substr(0, 7), "http://") ||
                               platform::equalsIgnoringAsciiCase(value.substr(0, 8), "https://");
            return isWeb ? std::optional<std::string>(value) : std::nullopt;
        }
    }
}

void appendEscaped(std::string_view text, std::string& to) {
    for (const char character : text) {
        if (character == '<') {
            to += "&lt;";
        } else if (character == '>') {
            to += "&gt;";
        } else if (character == '"') {
            to += "&quot;";
        } else {
            to += character;
        }
    }
}

// Collects lines of HTML without block elements, and reads each as text.
class LineCollector {
public:
    void add(const HtmlToken& token) {
        if (!token.isTag) {
            appendEscaped(token.contents, line_);
        } else if (token.name == "br") {
            endLine();
        } else if (isAmong(kBlocks, token.name)) {
            if (!line_.empty()) {
                endLine();
            }
        } else if (token.name == "a") {
            token.isEnd ? endLink() : beginLink(token.contents);
        } else if (token.name == "td" || token.name == "th") {
            line_ += ' ';
        }
    }

    std::string text() {
        endLink();
        if (!line_.empty()) {
            endLine();
        }
        return text_;
    }

private:
    void beginLink(std::string_view attributes) {
        endLink();
        address_ = webAddressIn(attributes).value_or("");
        linkAt_ = line_.size();
    }
    void endLink() {
        std::string address;
        appendEscaped(address_, address);
        if (!address.empty() && line_.substr(std::min(linkAt_, line_.size())) != address) {
            line_ += " &lt;" + address + "&gt;";
        }
        address_.clear();
    }
    void endLine() {
        const std::string line = platform::textOfHtml(line_);
        if (!line.empty() || !text_.empty()) {
            text_ += line + "\n";
        }
        line_.clear();
        linkAt_ = 0;
    }

    std::string text_;
    std::string line_;
    std::string address_;  // of the link that is open; empty: none
    std::size_t linkAt_ = 0;
};

}  // namespace

std::string harmlessHtml(std::string_view html) {
    std::string harmless;
    forEachToken(html, [&harmless](const HtmlToken& token) {
        if (!token.isTag) {
            appendEscaped(token.contents, harmless);
        } else if (isAmong(kBlocks, token.name) || isAmong(kInline, token.name)) {
            harmless.append(token.isEnd ? "</" : "<").append(token.name).append(">");
        } else if (token.name == "a" && token.isEnd) {
            harmless += "</a>";
        } else if (token.name == "a") {
            if (const auto address = webAddressIn(token.contents)) {
                harmless += "<a href=\"";
                appendEscaped(*address, harmless);
                harmless += "\">";
            }
        }
    });
    return harmless;
}

std::string textOfDraftHtml(std::string_view html) {
    LineCollector lines;
    forEachToken(html, [&lines](const HtmlToken& token) { lines.add(token); });
    return lines.text();
}

}  // namespace quillet::mailhost
