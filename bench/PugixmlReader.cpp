#include <pugixml.hpp>
#include <stdexcept>

#include "bench/Readers.h"

namespace quillet::bench {

namespace {

platform::Number numberOf(const pugi::xml_node& value) {
    return platform::Number(std::int64_t{value.text().as_llong()});
}

// Reads keys and values, which alternate, in one pass.
std::shared_ptr<PeerMessage> messageOf(const pugi::xml_node& dictionary) {
    auto message = std::make_shared<PeerMessage>();
    for (pugi::xml_node node = dictionary.first_child(); node;) {
        const std::string_view key = node.child_value();
        const pugi::xml_node value = node.next_sibling();
        node = value.next_sibling();
        if (key == "idx") {
            message->idx = value.text().as_ullong();
        } else if (key == "acc_idx") {
            message->acc_idx = value.text().as_ullong();
        } else if (key == "icon_fetch") {
            message->icon_fetch = value.text().as_ullong();
        } else if (key == "flip") {
            message->flip = value.text().as_ullong();
        } else if (key == "subject") {
            message->subject = value.child_value();
        } else if (key == "messageId") {
            message->messageId = value.child_value();
        } else if (key == "from") {
            message->from = value.child_value();
        } else if (key == "account") {
            message->account = value.child_value();
        } else if (key == "folder") {
            message->folderPath = value.child_value();
        } else if (key == "folderStid") {
            message->folderStandardId = numberOf(value);
        } else if (key == "isUnread") {
            message->unread = numberOf(value);
        } else if (key == "date") {
            message->date = static_cast<double>(numberOf(value).floatValue());
        }
    }
    return message;
}

pugi::xml_node dataOf(const pugi::xml_document& document) {
    for (const pugi::xml_node key : document.child("plist").child("dict").children("key")) {
        if (std::string_view(key.child_value()) == "data") {
            return key.next_sibling();
        }
    }
    throw std::runtime_error("pugixml could not read a file");
}

}  // namespace

Outcome readWithPugixml(const std::string& container) {
    PeerMessages messages;
    forEachFile(container, [&](char* bytes, std::size_t size) {
        pugi::xml_document document;
        document.load_buffer_inplace(bytes, size, pugi::parse_default, pugi::encoding_utf8);
        for (const pugi::xml_node element : dataOf(document).children()) {
            messages.push_back(messageOf(element));
        }
    });
    return finished(std::move(messages));
}

}  // namespace quillet::bench
