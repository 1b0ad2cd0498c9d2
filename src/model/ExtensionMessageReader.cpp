#include "model/ExtensionMessageReader.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "model/ExtensionDate.h"
#include "platform/base/Exception.h"
#include "platform/base/Log.h"
#include "platform/extension/Bundle.h"

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

constexpr std::size_t kLongText = 256;  // bytes; copying a shorter one costs less than finding it

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
    longTexts_.clear();
    mayShareTexts_ = data.mayShareTexts(kLongText);
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
    constexpr auto kRelaxed = std::memory_order_relaxed;  // no other thread knows the record yet
    if (found_[kIdx]) {
        message.idx_.store(found_[kIdx].unsignedIntegerValue(), kRelaxed);
    }
    if (found_[kAccIdx]) {
        message.acc_idx_.store(found_[kAccIdx].unsignedIntegerValue(), kRelaxed);
    }
    if (found_[kIconFetch]) {
        message.icon_fetch_.store(static_cast<std::uint64_t>(integerOf(kIconFetch)), kRelaxed);
    }
    if (found_[kFlip]) {
        message.flip_.store(static_cast<std::uint64_t>(integerOf(kFlip)), kRelaxed);
    }
}

void ExtensionMessageReader::fillTexts(ExtensionMessage& message) {
    message.subject_ = textOf(kSubject, noSubject_);
    message.messageId_ = textOf(kMessageId, "");
    message.from_ = textOf(kFrom, senders_);
    message.account_ = textOf(kAccount, accounts_);
    message.folderPath_ = textOf(kFolder, folders_);
    message.folderStandardId_ = {numberOf(found_[kFolderStid]), true};
    message.unread_ = {numberOf(found_[kIsUnread]), true};
}

void ExtensionMessageReader::fillDate(ExtensionMessage& message) {
    // Single precision is kept on purpose: it rounds today's dates to 128 seconds, and host and
    // widget must agree on the dates of their lists.
    float date = found_[kDate] ? realOf(kDate) : 0.0F;
    constexpr float kLimit = std::numeric_limits<float>::max();
    date = std::isnan(date) ? 0.0F : std::clamp(date, -kLimit, kLimit);
    message.date_.store(static_cast<double>(date), std::memory_order_relaxed);
    message.dateString_ = dates_.text(static_cast<double>(date)).sharedInBlock();
}

ExtensionMessageReader::LongText* ExtensionMessageReader::findLongText(Key key) {
    const std::optional<std::uint32_t> object = found_[key].sharedText(kLongText);
    return object ? &longTexts_[*object] : nullptr;
}

std::int64_t ExtensionMessageReader::integerOf(Key key) {
    LongText* const text = longTextOf(key);
    if (text == nullptr) {
        return found_[key].integerValue();
    }
    if (!text->integer) {
        text->integer = found_[key].integerValue();
    }
    return *text->integer;
}

float ExtensionMessageReader::realOf(Key key) {
    LongText* const text = longTextOf(key);
    if (text == nullptr) {
        return found_[key].floatValue();
    }
    if (!text->real) {
        text->real = found_[key].floatValue();
    }
    return *text->real;
}

RecordText ExtensionMessageReader::textOf(Key key, std::string_view fallback) {
    LongText* const text = longTextOf(key);
    if (text == nullptr) {
        return block_->store(found_[key] ? found_[key].stringValue(scratch_) : fallback);
    }
    if (!text->text) {
        text->text = block_->store(found_[key].stringValue(scratch_));
    }
    return text->text.sharedInBlock();
}

RecordText ExtensionMessageReader::textOf(Key key, SharedTexts& shared) {
    if (longTextOf(key) != nullptr) {
        return textOf(key, "");
    }
    return shared.in(*block_, found_[key] ? found_[key].stringValue(scratch_) : "");
}

}  // namespace quillet
