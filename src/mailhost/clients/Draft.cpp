#include "mailhost/clients/Draft.h"

#include <algorithm>
#include <any>

#include "mailhost/clients/DraftHtml.h"

#include "platform/base/StandardError.h"
#include "platform/base/TextFormat.h"
#include "platform/base/Utf8.h"

namespace quillet::mailhost {

namespace {

std::string oneLine(const ExtensionMessage::Text& text) {
    return platform::printableLine(text.value_or(""));
}

}  // namespace

std::vector<std::string> recipientsIn(std::string_view list) {
    std::vector<std::string> recipients;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(';'), list.size());
        const auto recipient = platform::trimmingWhitespaceAndNewlines(list.substr(0, end));
        const bool isOneLine = platform::printableLine(recipient) == recipient;
        if (!recipient.empty() && isOneLine && recipient != platform::kAbsentText) {
            recipients.emplace_back(recipient);
        }
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return recipients;
}

// The HTML body counts if it has a text, else the plain one.
Draft draftOf(const ExtensionMessage& message) {
    Draft draft;
    draft.account = oneLine(message.account());
    draft.from = oneLine(message.from());
    draft.to = recipientsIn(message.toString().value_or(""));
    draft.cc = recipientsIn(message.ccString().value_or(""));
    draft.bcc = recipientsIn(message.bccString().value_or(""));
    draft.subject = oneLine(message.subject());
    const std::string html = message.htmlBody().value_or("");
    draft.text = message.plainBody().value_or("");
    if (!html.empty()) {
        draft.html = harmlessHtml(html);
        draft.text = draft.text.empty() ? textOfDraftHtml(html) : draft.text;
    }
    for (const std::any& file : message.attachments().value_or(ExtensionMessage::Attachments())) {
        if (const auto* path = std::any_cast<std::string>(&file)) {
            draft.files.push_back(*path);
        }
    }
    return draft;
}

}  // namespace quillet::mailhost
