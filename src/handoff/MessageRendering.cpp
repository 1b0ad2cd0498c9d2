#include "handoff/MessageRendering.h"

#include <any>
#include <utility>

#include "handoff/AttachmentPath.h"
#include "handoff/LinkMarkup.h"
#include "platform/base/TextFormat.h"
#include "platform/url/LinkDetector.h"

namespace quillet {

namespace {

std::string renderHtmlBody(ExtensionMessage& message, std::string html) {
    for (const std::any& attachment :
         message.attachments().value_or(ExtensionMessage::Attachments())) {
        // Every file is shown as an image, whatever it contains, and its path is inserted as it is.
        if (const auto path = attachmentPath(attachment)) {
            html += platform::formatText("<img src=\"file://%@\"/><br/>", {*path});
        }
    }
    message.setHtmlBody(html);
    return html;
}

std::string withBreaks(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char character : text) {
        if (character == '\n') {
            result += "<br>";
        } else {
            result += character;
        }
    }
    return result;
}

std::string renderPlainBody(ExtensionMessage& message, std::string_view plain) {
    const std::string body = withBreaks(plain);
    // A link that was found twice is replaced twice, the second time inside its own anchors. A link
    // whose absolute form is not in the text is not replaced.
    std::string html =
        markUpLinks(body, searchUrlsDetector(message, body), kMostMarkup + body.size());
    message.setPlainBody(html);
    return html;
}

}  // namespace

std::string renderHtml(ExtensionMessage& message) {
    ExtensionMessage::Text html = message.htmlBody();
    const ExtensionMessage::Text plain = message.plainBody();
    const bool hasPlain = plain && !plain->empty();
    if (html && (!html->empty() || !hasPlain)) {
        return renderHtmlBody(message, std::move(*html));
    }
    return hasPlain ? renderPlainBody(message, *plain) : std::string();
}

std::vector<std::string> searchUrlsDetector(const ExtensionMessage& /*message*/,
                                            std::string_view text) {
    std::vector<std::string> urls;
    for (platform::TextLink& link : platform::LinkDetector::linksIn(text)) {
        urls.push_back(std::move(link.absoluteString));
    }
    return urls;
}

}  // namespace quillet
