#include "mailhost/maildir/ReplyHeader.h"

#include <algorithm>
#include <gmime/gmime.h>
#include <memory>

#include "mailhost/maildir/HeaderFields.h"
#include "mailhost/maildir/HeaderFile.h"
#include "mailhost/maildir/HeaderText.h"
#include "mailhost/maildir/MailLibrary.h"
#include "mailhost/maildir/MessageHeader.h"

#include "platform/base/Ascii.h"

namespace quillet::mailhost {

namespace {

constexpr std::size_t kLongestList = std::size_t{16} * 1024;  // bytes

// What stands between the next "<" and its ">". Takes it out of `text`; empty: there is none.
std::string_view takeIdentifier(std::string_view& text) {
    const std::size_t start = text.find('<');
    const std::size_t end = text.find('>', std::min(start, text.size()));
    if (end == std::string_view::npos) {
        text = {};
        return {};
    }
    const std::string_view identifier = text.substr(start + 1, end - start - 1);
    text.remove_prefix(end + 1);
    return identifier;
}

// A long identifier may stand in a line of its own, behind a folded line.
std::string messageIdIn(std::string_view value) {
    const std::string_view text = platform::trimmed(value, " \t\r\n");
    std::string_view rest = text;
    const std::string_view inBrackets = takeIdentifier(rest);
    return std::string(
        platform::trimmed(inBrackets.empty() ? text : inBrackets, std::string_view(" \t\r\n")));
}

std::vector<std::string> identifiersIn(std::string_view value) {
    std::vector<std::string> identifiers;
    std::string_view rest = value.substr(0, kLongestList);
    while (!rest.empty()) {
        if (const std::string_view identifier = takeIdentifier(rest); !identifier.empty()) {
            identifiers.emplace_back(identifier);
        }
    }
    return identifiers;
}

std::vector<std::string> referencesOf(const HeaderFields& fields, const std::string& messageId) {
    std::vector<std::string> references =
        identifiersIn(fields.valueOf("References").value_or(std::string_view()));
    if (references.empty()) {
        references = identifiersIn(fields.valueOf("In-Reply-To").value_or(std::string_view()));
        references.resize(references.size() == 1 ? 1 : 0);  // of several none is the right one
    }
    if (!messageId.empty()) {
        references.push_back(messageId);
    }
    if (references.size() > ReplyHeader::kMostReferences) {
        references.erase(
            references.begin() + 1,
            references.end() - static_cast<std::ptrdiff_t>(ReplyHeader::kMostReferences - 1));
    }
    return references;
}

void appendAddress(InternetAddress* mailbox, std::vector<std::string>& to) {
    const char* const text = internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(mailbox));
    if (text != nullptr && *text != '\0') {
        to.emplace_back(text);
    }
}

bool isGroup(InternetAddress* address) {
    return INTERNET_ADDRESS_IS_GROUP(address);
}

void appendAddresses(InternetAddressList* list, std::vector<std::string>& to) {
    for (int index = 0; list != nullptr && index < internet_address_list_length(list); ++index) {
        InternetAddress* const address = internet_address_list_get_address(list, index);
        if (isGroup(address)) {
            appendAddresses(internet_address_group_get_members(INTERNET_ADDRESS_GROUP(address)),
                            to);
        } else {
            appendAddress(address, to);
        }
    }
}

std::vector<std::string> addressesOf(const HeaderFields& fields, std::string_view name) {
    std::vector<std::string> addresses;
    if (const auto value = fields.valueOf(name)) {
        const std::string text = fieldText(*value, {}, kLongestList / 4);
        const std::unique_ptr<InternetAddressList, void (*)(void*)> list(
            internet_address_list_parse(nullptr, text.c_str()), g_object_unref);
        appendAddresses(list.get(), addresses);
    }
    return addresses;
}

}  // namespace

ReplyHeader parseReplyHeader(std::string_view bytes) {
    startMailLibrary();
    const HeaderFields fields(bytes.substr(0, kLongestHeader));
    ReplyHeader header;
    header.messageId = messageIdIn(fields.valueOf("Message-ID").value_or(std::string_view()));
    header.references = referencesOf(fields, header.messageId);
    header.recipients = addressesOf(fields, "Reply-To");
    if (header.recipients.empty()) {
        header.recipients = addressesOf(fields, "From");
    }
    header.subject = parseHeader(bytes).subject;
    return header;
}

ReplyHeader readReplyHeader(const std::string& path) {
    const platform::Result<std::string> bytes = readHeaderBytes(path);
    return bytes ? parseReplyHeader(bytes.value()) : ReplyHeader();
}

}  // namespace quillet::mailhost
