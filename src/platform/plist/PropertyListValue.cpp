#include <algorithm>
#include <array>
#include <deque>
#include <limits>
#include <numeric>
#include <string>

#include "platform/base/Exception.h"
#include "platform/base/Utf8.h"
#include "platform/plist/PropertyList.h"
#include "platform/plist/PropertyListState.h"

namespace quillet::platform {

namespace {

using Form = PropertyListForm;
using Node = PropertyListNode;
using State = PropertyListState;
using Type = PropertyListType;

// In the order of PropertyListType.
constexpr std::array<std::string_view, 10> kTypeNames = {"an absent value",
                                                         "a string",
                                                         "an integer",
                                                         "a real",
                                                         "a boolean",
                                                         "a date",
                                                         "data",
                                                         "an array",
                                                         "a dictionary",
                                                         "a UID"};
static_assert(kTypeNames[static_cast<std::size_t>(Type::Uid)] == "a UID");

Number numberOf(const Node& node) {
    switch (node.type) {
        case Type::Boolean:
            return Number(node.bits() != 0);
        case Type::Real:
            return Number(node.real());
        default:
            return node.form == Form::Unsigned ? Number(node.bits())
                                               : Number(static_cast<std::int64_t>(node.bits()));
    }
}

// Merges entries with equal keys into the first of them, with the value of the last. `keyOf`
// returns the key of an entry's index.
template <typename KeyOf>
void mergeEqual(std::vector<PropertyListValue::Entry>& entries, KeyOf keyOf) {
    std::vector<std::size_t> order(entries.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {}, keyOf);
    for (std::size_t i = 1, first = 0; i < order.size(); ++i) {
        if (keyOf(order[first]) != keyOf(order[i])) {
            first = i;
            continue;
        }
        entries[order[first]].second = entries[order[i]].second;
        order[i] = entries.size();
    }
    std::vector<PropertyListValue::Entry> merged;
    std::ranges::sort(order);
    for (const std::size_t entry : order) {
        if (entry < entries.size()) {
            merged.push_back(entries[entry]);
        }
    }
    entries = std::move(merged);
}

// Whether a text equals `key`. A UTF-16 text that is too long is not converted.
bool isText(const State& state, const Node& text, std::string_view key, std::string& scratch) {
    const bool mayBe = text.form != Form::Utf16 || text.length <= 2 * key.size();
    return mayBe && textOfNode(state, text, scratch) == key;
}

}  // namespace

std::string_view textOfNode(const State& state, const Node& node, std::string& scratch) {
    const std::string_view text = state.textOf(node);
    if (node.form == Form::Plain) {
        return text;
    }
    scratch.clear();
    if (node.form == Form::Utf16) {
        appendUtf16AsUtf8(text, std::endian::big, scratch);
    } else {
        appendUnescapedXml(text, scratch);
    }
    return scratch;
}

PropertyListType PropertyListValue::type() const noexcept {
    return state_ == nullptr ? Type::Absent : node().type;
}

void PropertyListValue::raise(const char* conversion) const {
    const std::string name(kTypeNames[static_cast<std::size_t>(type())]);
    throw Exception(name + " has no " + conversion);
}

const PropertyListNode& PropertyListValue::nodeOfType(Type wanted, const char* conversion) const {
    if (type() != wanted) {
        raise(conversion);
    }
    return node();
}

std::string_view PropertyListValue::stringValue(std::string& scratch) const {
    return textOfNode(*state_, nodeOfType(Type::String, "string value"), scratch);
}

std::string PropertyListValue::stringValue() const {
    std::string scratch;
    const std::string_view text = stringValue(scratch);
    return text.data() == scratch.data() ? std::move(scratch) : std::string(text);
}

// The number of an integer, real or boolean; raises for every other type.
Number PropertyListValue::number(const char* conversion) const {
    const Type own = type();
    if (own != Type::Integer && own != Type::Real && own != Type::Boolean) {
        raise(conversion);
    }
    return numberOf(node());
}

std::uint64_t PropertyListValue::unsignedIntegerValue() const {
    return number("unsigned integer value").unsignedIntegerValue();
}

std::int64_t PropertyListValue::integerValue() const {
    std::string scratch;
    return type() == Type::String ? integerValueOfText(stringValue(scratch))
                                  : number("integer value").integerValue();
}

float PropertyListValue::floatValue() const {
    std::string scratch;
    return type() == Type::String ? floatValueOfText(stringValue(scratch))
                                  : number("single-precision value").floatValue();
}

bool PropertyListValue::boolValue() const {
    std::string scratch;
    return type() == Type::String ? boolValueOfText(stringValue(scratch))
                                  : number("boolean value").boolValue();
}

Number PropertyListValue::numberValue() const {
    return number("number value");
}

std::optional<std::uint32_t> PropertyListValue::sharedText(std::size_t size) const noexcept {
    const bool isShared = type() == Type::String && state_->referenceWidth != 0;
    return isShared && node().length >= size ? std::optional(node_) : std::nullopt;
}

bool PropertyListValue::mayShareTexts(std::size_t size) const noexcept {
    return state_ != nullptr && state_->longestText >= size;
}

double PropertyListValue::dateValue() const {
    return nodeOfType(Type::Date, "date value").real();
}

std::uint64_t PropertyListValue::uidValue() const {
    return nodeOfType(Type::Uid, "UID value").bits();
}

std::string PropertyListValue::dataValue() const {
    const Node& data = nodeOfType(Type::Data, "data value");
    if (data.form == Form::Plain) {
        return std::string(state_->textOf(data));
    }
    std::string scratch;
    if (data.form == Form::Escaped) {
        appendUnescapedXml(state_->textOf(data), scratch);
        return decodedBase64(scratch);
    }
    return decodedBase64(state_->textOf(data));
}

std::size_t PropertyListValue::count() const noexcept {
    return state_ != nullptr && node().isContainer() ? node().length : 0;
}

PropertyListValue PropertyListValue::valueForKey(std::string_view key) const {
    nodeOfType(Type::Dictionary, "value for a key");
    std::string scratch;
    PropertyListValue found;
    forEachEntry(*state_, node_, [&](std::uint32_t keyNode, std::uint32_t valueNode) {
        // The search goes on after a match: the last value of a repeated key counts.
        if (isText(*state_, state_->nodes[keyNode], key, scratch)) {
            found = PropertyListValue(state_, valueNode);
        }
    });
    return found;
}

PropertyListValue::Iterator PropertyListValue::begin() const {
    if (state_ == nullptr || !node().isContainer()) {
        raise("elements to loop over");
    }
    const Node& container = node();
    Iterator iterator;
    iterator.state_ = state_;
    iterator.at_ = container.form == Form::References ? container.offset : node_ + 1;
    iterator.remaining_ = container.length;
    if (container.type == Type::Dictionary) {
        auto keys = std::make_shared<std::vector<PropertyListValue>>();
        for (const auto& [key, value] : entries()) {
            keys->push_back(key);
        }
        iterator.remaining_ = static_cast<std::uint32_t>(keys->size());
        iterator.keys_ = std::move(keys);
    }
    return iterator;
}

PropertyListValue::Iterator PropertyListValue::end() const {
    if (state_ == nullptr || !node().isContainer()) {
        raise("elements to loop over");
    }
    return {};
}

PropertyListValue PropertyListValue::Iterator::operator*() const noexcept {
    if (keys_) {
        return keys_->end()[-static_cast<std::ptrdiff_t>(remaining_)];
    }
    return {state_, state_->referenceWidth == 0 ? at_ : state_->reference(at_, 0)};
}

PropertyListValue::Iterator& PropertyListValue::Iterator::operator++() noexcept {
    if (state_->referenceWidth != 0) {
        at_ += state_->referenceWidth;
    } else if (!keys_) {
        at_ = state_->nodes[at_].extent;
    }
    --remaining_;
    return *this;
}

std::vector<PropertyListValue::Entry> PropertyListValue::entries() const {
    const Node& dictionary = nodeOfType(Type::Dictionary, "entries");
    std::vector<Entry> result;
    result.reserve(dictionary.length);
    forEachEntry(*state_, node_, [&](std::uint32_t key, std::uint32_t value) {
        result.emplace_back(PropertyListValue(state_, key), PropertyListValue(state_, value));
    });
    mergeRepeatedKeys(result);
    return result;
}

// Leaves each key at its first place, with the value of its last one. Keys that share an object are
// merged first, so that each is converted only once.
void PropertyListValue::mergeRepeatedKeys(std::vector<Entry>& entries) {
    mergeEqual(entries, [&](std::size_t entry) { return entries[entry].first.node_; });
    std::deque<std::string> converted;
    std::vector<std::string_view> texts;
    texts.reserve(entries.size());
    for (const Entry& entry : entries) {
        std::string scratch;
        std::string_view text = entry.first.stringValue(scratch);
        if (text.data() == scratch.data()) {
            text = converted.emplace_back(std::move(scratch));
        }
        texts.push_back(text);
    }
    mergeEqual(entries, [&](std::size_t entry) { return texts[entry]; });
}

}  // namespace quillet::platform
