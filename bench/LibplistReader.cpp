#include <memory>
#include <plist/plist.h>
#include <stdexcept>

#include "bench/Readers.h"

namespace quillet::bench {

namespace {

struct PlistDeleter {
    void operator()(void* node) const { plist_free(node); }
};

std::uint64_t integerOf(plist_t dictionary, const char* key) {
    std::uint64_t value = 0;
    if (plist_t node = plist_dict_get_item(dictionary, key)) {
        plist_get_uint_val(node, &value);
    }
    return value;
}

std::string textOf(plist_t dictionary, const char* key) {
    std::uint64_t length = 0;
    plist_t node = plist_dict_get_item(dictionary, key);
    const char* text = node != nullptr ? plist_get_string_ptr(node, &length) : nullptr;
    return text != nullptr ? std::string(text, length) : std::string();
}

platform::Number numberOf(plist_t dictionary, const char* key) {
    return platform::Number(static_cast<std::int64_t>(integerOf(dictionary, key)));
}

std::shared_ptr<PeerMessage> messageOf(plist_t dictionary) {
    auto message = std::make_shared<PeerMessage>();
    message->idx = integerOf(dictionary, "idx");
    message->acc_idx = integerOf(dictionary, "acc_idx");
    message->icon_fetch = integerOf(dictionary, "icon_fetch");
    message->flip = integerOf(dictionary, "flip");
    message->subject = textOf(dictionary, "subject");
    message->messageId = textOf(dictionary, "messageId");
    message->from = textOf(dictionary, "from");
    message->account = textOf(dictionary, "account");
    message->folderPath = textOf(dictionary, "folder");
    message->folderStandardId = numberOf(dictionary, "folderStid");
    message->unread = numberOf(dictionary, "isUnread");
    message->date = static_cast<double>(numberOf(dictionary, "date").floatValue());
    return message;
}

}  // namespace

Outcome readWithLibplist(const std::string& container) {
    PeerMessages messages;
    forEachFile(container, [&](const char* bytes, std::size_t size) {
        plist_t parsed = nullptr;
        plist_from_memory(bytes, static_cast<std::uint32_t>(size), &parsed);
        const std::unique_ptr<void, PlistDeleter> root(parsed);
        plist_t data = root ? plist_dict_get_item(root.get(), "data") : nullptr;
        if (data == nullptr) {
            throw std::runtime_error("libplist could not read a file");
        }
        plist_array_iter iterator = nullptr;
        plist_array_new_iter(data, &iterator);
        const std::unique_ptr<void, decltype(&std::free)> owner(iterator, &std::free);
        plist_t element = nullptr;
        for (plist_array_next_item(data, iterator, &element); element != nullptr;
             plist_array_next_item(data, iterator, &element)) {
            messages.push_back(messageOf(element));
        }
    });
    return finished(std::move(messages));
}

}  // namespace quillet::bench
