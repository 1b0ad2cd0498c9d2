#include "message/MessageHeader.h"

#include <algorithm>

#include "platform/base/StandardError.h"
#include "platform/base/Utf8.h"

namespace quillet::message {

namespace {

constexpr std::size_t kLongestText = 1000;        // bytes
constexpr std::size_t kLongestReferences = 2000;  // bytes
constexpr std::size_t kMostAddresses = 1000;      // of a field

void addAddress(InternetAddress* address, std::vector<std::string>& entries) {
    const GMimeText text(internet_address_to_string(address, nullptr, FALSE));
    if (std::string entry = oneLine(text.get()); !entry.empty()) {
        entries.push_back(std::move(entry));
    }
}

template <typename Add>
void eachAddress(InternetAddressList* list, Add add) {
    const int count = list == nullptr ? 0 : internet_address_list_length(list);
    for (int place = 0; place < count && place < static_cast<int>(kMostAddresses); ++place) {
        add(internet_address_list_get_address(list, place));
    }
}

std::vector<std::string> entriesOf(GMimeMessage* read, GMimeAddressType field) {
    std::vector<std::string> entries;
    eachAddress(g_mime_message_get_addresses(read, field),
                [&entries](InternetAddress* address) { addAddress(address, entries); });
    return entries;
}

std::vector<std::string> mailAddressesOf(GMimeMessage* read, GMimeAddressType field) {
    std::vector<std::string> addresses;
    eachAddress(g_mime_message_get_addresses(read, field), [&addresses](InternetAddress* address) {
        if (INTERNET_ADDRESS_IS_MAILBOX(address)) {
            std::string mail =
                oneLine(internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(address)));
            if (mail.find('@') != std::string::npos) {
                addresses.push_back(std::move(mail));
            }
        }
    });
    return addresses;
}

// The newest identifiers stand at the end.
std::string referencesOf(GMimeMessage* read) {
    const char* const value = g_mime_object_get_header(GMIME_OBJECT(read), "References");
    std::string text = value == nullptr ? "" : platform::printableLine(value);
    if (text.size() > kLongestReferences) {
        text.erase(0, text.size() - kLongestReferences);
        text.erase(0, text.find('<'));
    }
    return std::string(platform::trimmingWhitespaceAndNewlines(text));
}

}  // namespace

void startGMime() {
    static const bool isStarted = (g_mime_init(), true);
    static_cast<void>(isStarted);
}

std::string oneLine(const char* text) {
    if (text == nullptr) {
        return {};
    }
    const std::string_view whole(text);
    const bool isCut = whole.size() > kLongestText;
    std::size_t end = std::min(whole.size(), kLongestText);
    while (isCut && end > 0 && (static_cast<unsigned char>(whole[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    std::string line = platform::printableLine(whole.substr(0, end));
    const auto areBlanks = [](char one, char other) { return one == ' ' && other == ' '; };
    line.erase(std::unique(line.begin(), line.end(), areBlanks), line.end());
    if (isCut) {
        line += "\u2026";
    }
    return std::string(platform::trimmingWhitespaceAndNewlines(line));
}

void readHeader(GMimeMessage* read, ParsedMessage& message) {
    message.from = entriesOf(read, GMIME_ADDRESS_TYPE_FROM);
    if (message.from.empty()) {
        message.from = entriesOf(read, GMIME_ADDRESS_TYPE_SENDER);
    }
    message.to = entriesOf(read, GMIME_ADDRESS_TYPE_TO);
    message.cc = entriesOf(read, GMIME_ADDRESS_TYPE_CC);
    message.bcc = entriesOf(read, GMIME_ADDRESS_TYPE_BCC);
    message.replyTo = mailAddressesOf(read, GMIME_ADDRESS_TYPE_REPLY_TO);
    if (message.replyTo.empty()) {
        message.replyTo = mailAddressesOf(read, GMIME_ADDRESS_TYPE_FROM);
    }
    message.subject = oneLine(g_mime_message_get_subject(read));
    if (GDateTime* const date = g_mime_message_get_date(read)) {
        message.date = g_date_time_to_unix(date);
    }
    message.messageId = oneLine(g_mime_message_get_message_id(read));
    message.references = referencesOf(read);
}

}  // namespace quillet::message
