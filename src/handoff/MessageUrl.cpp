#include "handoff/MessageUrl.h"

#include <any>
#include <cerrno>
#include <string>
#include <utility>

#include "handoff/AttachmentPath.h"
#include "model/ExtensionAddress.h"
#include "model/HostInterface.h"
#include "platform/base/Error.h"
#include "platform/base/Log.h"
#include "platform/base/TextFormat.h"
#include "platform/base/Utf8.h"
#include "util/RequestUtils.h"

namespace quillet {

namespace {

using platform::URL;
using Text = ExtensionMessage::Text;

constexpr std::string_view kAttachmentKey = "attachment_";

void addText(ParameterMap& map, std::string_view key, Text text) {
    if (text && !text->empty()) {
        map.tryEmplace(std::string(key)).first = platform::validUtf8(*std::move(text));
    }
}

// Every address is followed by ";", also the last one.
Text joinedMails(const std::optional<ExtensionMessage::Recipients>& recipients) {
    std::string joined;
    for (const auto& recipient : recipients.value_or(ExtensionMessage::Recipients())) {
        const Text mail = recipient ? recipient->mail() : std::nullopt;
        joined.append(mail ? *mail : platform::kAbsentText).append(1, ';');
    }
    return joined;
}

// An attachment that is left out leaves a gap in the numbers.
void addAttachments(ParameterMap& map, const ExtensionMessage::Attachments& attachments) {
    std::size_t number = 0;
    for (const std::any& attachment : attachments) {
        const std::string key = std::string(kAttachmentKey) + std::to_string(number++);
        Text path = attachmentPath(attachment);
        if (path && platform::firstInvalidUtf8(*path)) {
            const auto error = platform::posixError(EILSEQ, platform::validUtf8(*path));
            platform::Log::write("queryUrl %@", {error.description()});
        } else if (path) {
            map.tryEmplace(key).first = *std::move(path);
        }
    }
}

// Sets the field of `key`; other keys are ignored.
void setField(ExtensionMessage& message, std::string_view key, std::string value) {
    if (key == "from") {
        message.setFrom(std::move(value));
    } else if (key == "account") {
        message.setAccount(std::move(value));
    } else if (key == "subject") {
        message.setSubject(std::move(value));
    } else if (key == "htmlBody") {
        message.setHtmlBody(std::move(value));
    } else if (key == "plainBody") {
        message.setPlainBody(std::move(value));
    } else if (key == "to") {
        message.setToString(std::move(value));
    } else if (key == "cc") {
        message.setCcString(std::move(value));
    } else if (key == "bcc") {
        message.setBccString(std::move(value));
    }
}

}  // namespace

std::optional<URL> queryUrl(const ExtensionMessage& message, std::string_view command) {
    ParameterMap map;
    addText(map, "plainBody", message.plainBody());
    addText(map, "htmlBody", message.htmlBody());
    addText(map, "subject", message.subject());
    addText(map, "from", message.from());
    addText(map, "account", message.account());
    addText(map, "bcc", joinedMails(message.bcc()));
    addText(map, "cc", joinedMails(message.cc()));
    addText(map, "to", joinedMails(message.to()));
    addAttachments(map, message.attachments().value_or(ExtensionMessage::Attachments()));
    std::string text = std::string(kHostScheme) + "://";
    text.append(command).append(1, '?').append(RequestUtils::URLQueryWithParameters(map));
    std::optional<URL> url = URL::URLWithString(text);
    // A command with "/", "?", "#", ":" or "@" also makes a URL, but with another host.
    return url && url->host() == command ? std::move(url) : std::nullopt;
}

std::shared_ptr<ExtensionMessage> ExtensionMessageWithUrl(const URL& url) {
    std::shared_ptr<ExtensionMessage> message = ExtensionMessage::init();
    ExtensionMessage::Attachments attachments;
    for (auto& [key, value] : RequestUtils::URLQueryParameters(url.absoluteString()).entries()) {
        // The default policy makes every value a text.
        auto& text = std::get<std::string>(value);
        if (key.starts_with(kAttachmentKey)) {
            attachments.emplace_back(std::move(text));
        } else {
            setField(*message, key, std::move(text));
        }
    }
    message->setAttachments(std::move(attachments));
    return message;
}

}  // namespace quillet
