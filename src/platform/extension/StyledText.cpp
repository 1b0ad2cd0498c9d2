#include "platform/extension/StyledText.h"

#include <string_view>
#include <utility>

#include "platform/extension/HtmlText.h"
#include "platform/url/LinkDetector.h"

namespace quillet::platform {

namespace {

std::string_view escapeOf(char byte) {
    switch (byte) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\n':
            return "<br/>";
        case '\t':
            return "&#160;&#160;&#160;&#160;";
        default:
            return {};
    }
}

// Writes plain text as HTML.
class HtmlWriter {
public:
    explicit HtmlWriter(std::size_t expected) { html_.reserve(expected + expected / 8); }

    void writeText(std::string_view text) {
        for (const char byte : text) {
            write(byte);
            before_ = byte;
        }
    }
    void writeMarkup(std::string_view markup) { html_ += markup; }
    std::string take() { return std::move(html_); }

private:
    void write(char byte) {
        if (const std::string_view escape = escapeOf(byte); !escape.empty()) {
            // "\r\n" is one line break, and so is a lone "\r".
            if (byte != '\n' || before_ != '\r') {
                html_ += escape;
            }
        } else if (byte == '\r') {
            html_ += escapeOf('\n');
        } else if (byte == ' ' && (before_ == ' ' || before_ == '\n' || before_ == '\r')) {
            html_ += "&#160;";  // HTML would join several blanks and drop those at a line's start
        } else {
            html_ += byte;
        }
    }

    std::string html_;
    char before_ = '\n';
};

}  // namespace

StyledText StyledText::withLinks(std::string string) {
    const std::string_view text = string;
    HtmlWriter html(text.size());
    std::size_t done = 0;
    for (const TextLink& link : LinkDetector::linksIn(text)) {
        html.writeText(text.substr(done, link.offset - done));
        html.writeMarkup("<a href=\"");
        html.writeText(link.absoluteString);
        html.writeMarkup("\">");
        html.writeText(text.substr(link.offset, link.length));
        html.writeMarkup("</a>");
        done = link.offset + link.length;
    }
    if (done == 0) {
        return {std::move(string), {}};
    }
    html.writeText(text.substr(done));
    return {std::move(string), html.take()};
}

std::string StyledText::htmlRepresentation() const {
    if (hasHtml()) {
        return *html;
    }
    HtmlWriter writer(string.size());
    writer.writeText(string);
    return writer.take();
}

std::string StyledText::plainString() const {
    return string.empty() && hasHtml() ? textOfHtml(*html) : string;
}

}  // namespace quillet::platform
