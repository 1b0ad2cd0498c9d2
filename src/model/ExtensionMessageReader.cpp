#include "model/ExtensionMessageReader.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "model/ExtensionDate.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/Exception.h"
#include "platform/foundation/Log.h"

namespace quillet {

using platform::Number;
using platform::PropertyListValue;

namespace {

constexpr std::string_view kKeys[] = {
    "idx",
    "acc_idx",
    "icon_fetch",
    "flip",
    "subject",
    "messageId",
    "from",
    "account",
    "folder",
    "folderStid",
    "isUnread",
    "date",
};

Number numberOf(const PropertyListValue& value) {
    return value ? value.numberValue() : Number();
}

}  // namespace

RecordText ExtensionMessageReader::SharedTexts::in(RecordBlock& block, std::string_view view) {
    RecordText& text = texts_[view.size() % texts_.size()];
    if (!text || text.view() != view) {
        text = block.store(view);
    }
    return text.sharedInBlock();
}

ExtensionMessageReader::ExtensionMessageReader() : ExtensionMessageReader(ExtensionDate::now()) {}

ExtensionMessageReader::ExtensionMessageReader(double now)
    : keys_(kKeys),
      noSubject_(platform::Bundle::main().localizedString("No subject")),
      block_(RecordBlock::make()),
      dates_(now, *block_) {
    static_assert(std::size(kKeys) == kKeyCount);
}

void ExtensionMessageReader::readAll(const PropertyListValue& data) {
    const auto end = data.end();
    block_->reserve(data.count());
    for (auto element = data.begin(); element != end; ++element) {
        fill(block_->append(), *element);
    }
}

std::shared_ptr<ExtensionMessage> ExtensionMessageReader::readOne(
    const PropertyListValue& dictionary) {
    block_->reserve(1);
    ExtensionMessage& message = block_->append();
    fill(message, dictionary);
    return RecordBlock::handle(block_, message);
}

void ExtensionMessageReader::fill(ExtensionMessage& message, const PropertyListValue& dictionary) {
    try {
        keys_.find(dictionary, found_);
        fillNumbers(message);
        fillTexts(message);
        fillDate(message);
    } catch (const platform::Exception& exception) {
        platform::Log::write("ExtensionMessage initWithDictonary %@", {exception.description()});
    }
}

void ExtensionMessageReader::fillNumbers(ExtensionMessage& message) {
    constexpr auto kRelaxed = std::memory_order_relaxed;  // nobody else knows the record yet
    if (found_[kIdx]) {
        message.idx_.store(found_[kIdx].unsignedIntegerValue(), kRelaxed);
    }
    if (found_[kAccIdx]) {
        message.acc_idx_.store(found_[kAccIdx].unsignedIntegerValue(), kRelaxed);
    }
    if (found_[kIconFetch]) {
        const std::int64_t value = found_[kIconFetch].integerValue();
        message.icon_fetch_.store(static_cast<std::uint64_t>(value), kRelaxed);
    }
    if (found_[kFlip]) {
        const std::int64_t value = found_[kFlip].integerValue();
        message.flip_.store(static_cast<std::uint64_t>(value), kRelaxed);
    }
}

void ExtensionMessageReader::fillTexts(ExtensionMessage& message) {
    message.subject_ = block_->store(textOf(kSubject, noSubject_));
    message.messageId_ = block_->store(textOf(kMessageId, {}));
    message.from_ = senders_.in(*block_, textOf(kFrom, {}));
    message.account_ = accounts_.in(*block_, textOf(kAccount, {}));
    message.folderPath_ = folders_.in(*block_, textOf(kFolder, {}));
    message.folderStandardId_ = {numberOf(found_[kFolderStid]), true};
    message.unread_ = {numberOf(found_[kIsUnread]), true};
}

void ExtensionMessageReader::fillDate(ExtensionMessage& message) {
    // The narrowing to single precision is kept on purpose: present dates are multiples of 128
    // seconds, and lists of host and widget agree on them.
    float date = found_[kDate] ? found_[kDate].floatValue() : 0.0F;
    constexpr float kLimit = std::numeric_limits<float>::max();
    date = std::isnan(date) ? 0.0F : std::clamp(date, -kLimit, kLimit);
    message.date_.store(static_cast<double>(date), std::memory_order_relaxed);
    message.dateString_ = dates_.text(static_cast<double>(date)).sharedInBlock();
}

std::string_view ExtensionMessageReader::textOf(Key key, std::string_view fallback) {
    return found_[key] ? found_[key].stringValue(scratch_) : fallback;
}

}  // namespace quillet
