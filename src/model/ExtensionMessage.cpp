#include "model/ExtensionMessage.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <mutex>
#include <string_view>
#include <utility>

#include "model/ExtensionMessageReader.h"
#include "model/RecordBlock.h"
#include "model/RecordFields.h"

namespace quillet {

using platform::Number;

namespace {

// Returns the lock of an object's atomic properties. All objects share a fixed set of locks: a lock
// in each record would take more memory than the record's fields.
std::mutex& propertyLock(const void* object) {
    constexpr std::size_t kLocks = 64;
    constexpr std::size_t kCacheLine = 64;  // bytes
    struct alignas(kCacheLine) Padded {
        std::mutex mutex;
    };
    static std::array<Padded, kLocks> locks;
    return locks[(reinterpret_cast<std::uintptr_t>(object) / kCacheLine) % kLocks].mutex;
}

bool equalTexts(const RecordText& left, const RecordText& right) {
    return left && right && left.view() == right.view();
}

}  // namespace

ExtensionMessage::ExtensionMessage() : date_(std::numeric_limits<double>::quiet_NaN()) {}

ExtensionMessage::~ExtensionMessage() = default;

// The two makers need the block and the reader, which in turn hold messages.
std::shared_ptr<ExtensionMessage> ExtensionMessage::init() {
    const std::shared_ptr<RecordBlock> block = RecordBlock::make();
    block->reserve(1);
    std::shared_ptr<ExtensionMessage> message = RecordBlock::handle(block, block->append());
    auto draft = std::make_unique<Draft>();
    draft->plainBody.emplace();
    draft->htmlBody.emplace();
    draft->to.emplace();
    draft->cc.emplace();
    draft->bcc.emplace();
    draft->attachments.emplace();
    message->draft_ = std::move(draft);
    return message;
}

std::shared_ptr<ExtensionMessage> ExtensionMessage::initWithDictonary(
    const platform::PropertyListValue& dictionary) {
    return ExtensionMessageReader().readOne(dictionary);
}

std::optional<double> ExtensionMessage::date() const noexcept {
    const double date = date_;
    return std::isnan(date) ? std::nullopt : std::optional(date);
}

void ExtensionMessage::setDate(std::optional<double> secondsSince1970) noexcept {
    date_ = secondsSince1970.value_or(std::numeric_limits<double>::quiet_NaN());
}

std::optional<Number> ExtensionMessage::unread() const {
    return get(unread_);
}

void ExtensionMessage::setUnread(const std::optional<Number>& number) {
    set(unread_, number);
}

std::optional<Number> ExtensionMessage::folderStandardId() const {
    return get(folderStandardId_);
}

void ExtensionMessage::setFolderStandardId(const std::optional<Number>& number) {
    set(folderStandardId_, number);
}

bool ExtensionMessage::isEqual(const ExtensionMessage* other) const {
    return other != nullptr && isEqualToModel(*other);
}

bool ExtensionMessage::isEqualToModel(const ExtensionMessage& other) const {
    if (this == &other) {
        return true;
    }
    std::mutex& mine = propertyLock(this);
    std::mutex& others = propertyLock(&other);
    std::unique_lock first(mine, std::defer_lock);
    std::unique_lock second(others, std::defer_lock);
    if (&mine == &others) {
        first.lock();
    } else {
        std::lock(first, second);
    }
    return equalTexts(messageId_, other.messageId_) && equalTexts(account_, other.account_);
}

std::string ExtensionMessage::description() const {
    return recordDescription("ExtensionMessage", subject());
}

ExtensionMessage::Text ExtensionMessage::get(const RecordText& field) const {
    const auto held = lock();
    return field ? Text(field.view()) : std::nullopt;
}

void ExtensionMessage::set(RecordText& field, const Text& text) {
    RecordText replacement = RecordText::copyOf(text);
    const auto held = lock();
    field = std::move(replacement);
}

std::optional<Number> ExtensionMessage::get(const OptionalNumber& field) const {
    const auto held = lock();
    return field.present ? std::optional(field.number) : std::nullopt;
}

void ExtensionMessage::set(OptionalNumber& field, const std::optional<Number>& number) {
    const auto held = lock();
    field = {number.value_or(Number()), number.has_value()};
}

std::unique_lock<std::mutex> ExtensionMessage::lock() const {
    return std::unique_lock(propertyLock(this));
}

ExtensionMessage::Draft& ExtensionMessage::draft() {
    if (!draft_) {
        draft_ = std::make_unique<Draft>();
    }
    return *draft_;
}

void ExtensionMessage::appendHtmlBody(std::string_view html) {
    const auto held = lock();
    Text& body = draft().htmlBody;
    if (!body) {
        body.emplace();
    }
    body->append(html);
}

void ExtensionMessage::appendAttachments(const std::vector<std::string>& paths) {
    const auto held = lock();
    std::optional<Attachments>& list = draft().attachments;
    if (!list) {
        list.emplace();
    }
    list->insert(list->end(), paths.begin(), paths.end());
}

}  // namespace quillet
