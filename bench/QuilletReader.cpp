#include "bench/Digest.h"
#include "bench/Readers.h"
#include "model/ExtensionMessage.h"
#include "widget/TodayViewController.h"

namespace quillet::bench {

namespace {

std::uint64_t digestOf(const ExtensionMessageList& messages) {
    Digest digest;
    for (const auto& message : *messages) {
        digest.add(message->idx(), message->acc_idx(), message->icon_fetch(), message->flip());
        digest.add(message->subject().value(), message->account().value(), message->from().value());
        digest.add(message->messageId().value(),
                   message->folderPath().value(),
                   message->dateString().value());
        digest.add(message->date().value(),
                   message->unread().value(),
                   message->folderStandardId().value());
        digest.next();
    }
    return digest.value();
}

}  // namespace

Outcome readWithQuillet(const std::string& /*container*/) {
    ExtensionMessageList messages = TodayViewController::updateData();
    const std::size_t count = messages->size();
    return {count, [messages = std::move(messages)] { return digestOf(messages); }};
}

}  // namespace quillet::bench
