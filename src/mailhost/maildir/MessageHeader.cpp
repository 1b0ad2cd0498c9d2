#include "mailhost/maildir/MessageHeader.h"

#include <gmime/gmime.h>
#include <memory>

#include "mailhost/maildir/HeaderFields.h"
#include "mailhost/maildir/HeaderFile.h"
#include "mailhost/maildir/HeaderText.h"
#include "mailhost/maildir/MailLibrary.h"

#include "platform/base/Ascii.h"

namespace quillet::mailhost {

namespace {

// More of a field is not decoded: a row shows much less, and hostile mail costs little. The parser
// of addresses calls itself for groups within groups, so it gets less.
constexpr std::size_t kLongestSubject = std::size_t{16} * 1024;   // bytes
constexpr std::size_t kLongestAddresses = std::size_t{4} * 1024;  // bytes
constexpr std::size_t kLongestDate = 1024;                        // bytes

using AllocatedText = std::unique_ptr<char, void (*)(void*)>;
using AddressList = std::unique_ptr<InternetAddressList, void (*)(void*)>;

std::string shown(const char* text) {
    return text == nullptr ? "" : shownText(text, MessageHeader::kLongestText);
}

// The charset that Content-Type names; empty: none.
std::string charsetOf(const HeaderFields& fields) {
    const auto value = fields.valueOf("Content-Type");
    if (!value) {
        return {};
    }
    const std::string text = fieldText(*value, {}, kLongestAddresses);
    const std::unique_ptr<GMimeContentType, void (*)(void*)> type(
        g_mime_content_type_parse(nullptr, text.c_str()), g_object_unref);
    const char* const charset =
        type ? g_mime_content_type_get_parameter(type.get(), "charset") : nullptr;
    return charset == nullptr ? "" : charset;
}

std::string decodedText(const std::string& value) {
    const AllocatedText text(g_mime_utils_header_decode_text(nullptr, value.c_str()), g_free);
    return shown(text.get());
}

// Many programs write names in quotes, and some encode these quotes.
std::string withoutQuotes(std::string name) {
    while (name.size() >= 2 && (name.front() == '"' || name.front() == '\'') &&
           name.front() == name.back()) {
        name = shown(name.substr(1, name.size() - 2).c_str());
    }
    return name;
}

InternetAddress* firstIn(InternetAddressList* list) {
    return list != nullptr && internet_address_list_length(list) > 0
               ? internet_address_list_get_address(list, 0)
               : nullptr;
}

std::string mailAddressOf(InternetAddress* address) {
    if (address != nullptr && INTERNET_ADDRESS_IS_GROUP(address)) {
        address = firstIn(internet_address_group_get_members(INTERNET_ADDRESS_GROUP(address)));
    }
    return address != nullptr && INTERNET_ADDRESS_IS_MAILBOX(address)
               ? shown(internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(address)))
               : "";
}

AddressList addressesIn(const std::string& value) {
    return {internet_address_list_parse(nullptr, value.c_str()), g_object_unref};
}

std::string senderIn(const std::string& value) {
    const AddressList addresses = addressesIn(value);
    InternetAddress* const first = firstIn(addresses.get());
    if (first != nullptr) {
        if (std::string name = withoutQuotes(shown(internet_address_get_name(first)));
            !name.empty()) {
            return name;
        }
        if (std::string address = mailAddressOf(first); !address.empty()) {
            return address;
        }
    }
    return decodedText(value);
}

std::optional<std::int64_t> dateIn(const HeaderFields& fields) {
    const auto value = fields.valueOf("Date");
    if (!value) {
        return std::nullopt;
    }
    const std::string text = fieldText(*value, {}, kLongestDate);
    const std::unique_ptr<GDateTime, void (*)(GDateTime*)> date(
        g_mime_utils_header_decode_date(text.c_str()), g_date_time_unref);
    return date ? std::optional<std::int64_t>(g_date_time_to_unix(date.get())) : std::nullopt;
}

}  // namespace

MessageHeader parseHeader(std::string_view bytes) {
    startMailLibrary();
    const HeaderFields fields(bytes.substr(0, kLongestHeader));
    const std::string charset = charsetOf(fields);
    MessageHeader header;
    if (const auto subject = fields.valueOf("Subject")) {
        header.subject = decodedText(fieldText(*subject, charset, kLongestSubject));
    }
    if (const auto from = fields.valueOf("From")) {
        header.from = senderIn(fieldText(*from, charset, kLongestAddresses));
    }
    header.date = dateIn(fields);
    if (const auto recipient = fields.valueOf("Delivered-To")) {
        const AddressList addresses =
            addressesIn(fieldText(*recipient, charset, kLongestAddresses));
        header.deliveredTo = mailAddressOf(firstIn(addresses.get()));
    }
    return header;
}

std::optional<std::int64_t> parseHeaderDate(std::string_view bytes) {
    startMailLibrary();
    return dateIn(HeaderFields(bytes.substr(0, kLongestHeader)));
}

MessageHeader readHeader(const std::string& path) {
    const platform::Result<std::string> bytes = readHeaderBytes(path);
    return bytes ? parseHeader(bytes.value()) : MessageHeader();
}

}  // namespace quillet::mailhost
