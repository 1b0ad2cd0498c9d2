#include <stdexcept>

#include "bench/Digest.h"
#include "bench/Readers.h"
#include "model/ExtensionMessage.h"
#include "platform/base/Queue.h"
#include "platform/desktop/UserDefaults.h"
#include "widget/TodayViewController.h"

namespace quillet::bench {

namespace {

// updateData schedules nothing.
class RefusingQueue final : public platform::Queue {
public:
    void async(Block /*block*/) override { throw std::logic_error("nothing is to be scheduled"); }
};

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
    RefusingQueue queue;
    platform::VolatileUserDefaults defaults;
    const auto controller = TodayViewController::make({queue, queue, defaults});
    ExtensionMessageList messages = controller->updateData();
    const std::size_t count = messages->size();
    return {count, [messages = std::move(messages)] { return digestOf(messages); }};
}

}  // namespace quillet::bench
