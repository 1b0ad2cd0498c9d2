#include "message/ReplyUrl.h"

#include <string_view>

#include "platform/base/Ascii.h"
#include "platform/url/PercentEncoding.h"

namespace quillet::message {

namespace {

constexpr std::size_t kMostRecipients = 20;

void appendEncoded(std::string_view text, std::string& to) {
    platform::appendPercentEncoded(text, platform::PercentKeep::Unreserved, to);
}

std::string subjectOfReply(const std::string& subject) {
    return platform::equalsIgnoringAsciiCase(subject.substr(0, 3), "Re:") ? subject
                                                                          : "Re: " + subject;
}

}  // namespace

std::string replyUrl(const ParsedMessage& message) {
    if (message.replyTo.empty()) {
        return {};
    }
    std::string url = "mailto:";
    for (std::size_t at = 0; at < message.replyTo.size() && at < kMostRecipients; ++at) {
        url += at == 0 ? "" : ",";
        // The mark of an address stays as it is: some programs look for it before they decode.
        const std::string& address = message.replyTo[at];
        const std::size_t mark = address.rfind('@');
        appendEncoded(address.substr(0, mark), url);
        url += '@';
        appendEncoded(address.substr(mark + 1), url);
    }
    url += "?subject=";
    appendEncoded(subjectOfReply(message.subject), url);
    if (!message.messageId.empty()) {
        const std::string identifier = "<" + message.messageId + ">";
        url += "&in-reply-to=";
        appendEncoded(identifier, url);
        url += "&references=";
        appendEncoded(
            message.references.empty() ? identifier : message.references + " " + identifier, url);
    }
    return url;
}

}  // namespace quillet::message
