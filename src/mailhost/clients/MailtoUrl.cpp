#include "mailhost/clients/MailtoUrl.h"

#include <string_view>

#include "platform/base/Ascii.h"
#include "platform/base/Utf8.h"
#include "platform/url/PercentEncoding.h"

namespace quillet::mailhost {

namespace {

constexpr std::string_view kReply = "Re:";

std::string encoded(std::string_view text) {
    std::string result;
    platform::appendPercentEncoded(
        platform::validUtf8(std::string(text)), platform::PercentKeep::Unreserved, result);
    return result;
}

// Addresses, with the "@" that programs look for.
std::string encodedList(const std::vector<std::string>& addresses) {
    constexpr std::string_view kEncodedAt = "%40";
    std::string list;
    for (const std::string& address : addresses) {
        std::string text = encoded(address);
        const std::size_t at = text.rfind(kEncodedAt);
        if (at != std::string::npos) {
            text.replace(at, kEncodedAt.size(), "@");
        }
        list.append(list.empty() ? "" : ",").append(text);
    }
    return list;
}

class MailtoWriter {
public:
    explicit MailtoWriter(const std::vector<std::string>& to) : url_("mailto:" + encodedList(to)) {}

    void add(std::string_view name, const std::string& encodedValue) {
        if (!encodedValue.empty()) {
            url_.append(hasFields_ ? "&" : "?").append(name).append("=").append(encodedValue);
            hasFields_ = true;
        }
    }
    const std::string& url() const { return url_; }

private:
    std::string url_;
    bool hasFields_ = false;
};

std::string inBrackets(const std::vector<std::string>& identifiers) {
    std::string list;
    for (const std::string& identifier : identifiers) {
        list.append(list.empty() ? "<" : " <").append(identifier).append(">");
    }
    return list;
}

std::string withNetworkLineEnds(std::string_view text) {
    std::string result;
    for (const char character : text) {
        if (character == '\n' && !result.ends_with('\r')) {
            result += '\r';
        }
        result += character;
    }
    return result;
}

}  // namespace

std::string mailtoForReply(const ReplyHeader& header) {
    const bool isReply = platform::equalsIgnoringAsciiCase(
        std::string_view(header.subject).substr(0, kReply.size()), kReply);
    MailtoWriter writer(header.recipients);
    writer.add("subject",
               encoded(isReply ? header.subject : std::string(kReply) + " " + header.subject));
    if (!header.messageId.empty()) {
        writer.add("in-reply-to", encoded(inBrackets({header.messageId})));
    }
    writer.add("references", encoded(inBrackets(header.references)));
    return writer.url();
}

std::string mailtoForDraft(const Draft& draft, MailtoFiles files) {
    MailtoWriter writer(draft.to);
    writer.add("cc", encodedList(draft.cc));
    writer.add("bcc", encodedList(draft.bcc));
    writer.add("subject", encoded(draft.subject));
    writer.add("body", encoded(withNetworkLineEnds(draft.text)));
    if (files == MailtoFiles::Named) {
        for (const std::string& file : draft.files) {
            std::string path;  // bytes of any kind, as they are
            platform::appendPercentEncoded(file, platform::PercentKeep::Unreserved, path);
            writer.add("attach", path);
        }
    }
    return writer.url();
}

}  // namespace quillet::mailhost
