#include <algorithm>
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

const char* nameOf(Type type) {
    switch (type) {
        case Type::Absent:
            return "an absent value";
        case Type::String:
            return "a string";
        case Type::Integer:
            return "an integer";
        case Type::Real:
            return "a real";
        case Type::Boolean:
            return "a boolean";
        case Type::Date:
            return "a date";
        case Type::Data:
            return "data";
        case Type::Array:
            return "an array";
        case Type::Dictionary:
            return "a dictionary";
        case Type::Uid:
            return "a UID";
    }
    return "a value";
}

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

// Merges the entries of equal keys, `keyOf` their numbers, into the first of them with the value of
// the last.
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

// Whether a text is `key`. One of UTF-16 that is too long for it is not converted.
bool isText(const State& state, const Node& text, std::string_view key, std::string& scratch) {
    const bool mayBe = text.form != Form::Utf16 || text.length <= 2 * key.size();
    return mayBe && textOfNode(state, text, scratch) == key;
}

bool isNumber(Type type) {
    return type == Type::Integer || type == Type::Real || type == Type::Boolean;
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
    throw Exception(std::string(nameOf(type())) + " has no " + conversion);
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

std::uint64_t PropertyListValue::unsignedIntegerValue() const {
    if (!isNumber(type())) {
        raise("unsigned integer value");
    }
    return numberOf(node()).unsignedIntegerValue();
}

std::int64_t PropertyListValue::integerValue() const {
    if (type() == Type::String) {
        std::string scratch;
        return integerValueOfText(stringValue(scratch));
    }
    if (!isNumber(type())) {
        raise("integer value");
    }
    return numberOf(node()).integerValue();
}

float PropertyListValue::floatValue() const {
    if (type() == Type::String) {
        std::string scratch;
        return floatValueOfText(stringValue(scratch));
    }
    if (!isNumber(type())) {
        raise("single-precision value");
    }
    return numberOf(node()).floatValue();
}

bool PropertyListValue::boolValue() const {
    if (type() == Type::String) {
        std::string scratch;
        return boolValueOfText(stringValue(scratch));
    }
    if (!isNumber(type())) {
        raise("boolean value");
    }
    return numberOf(node()).boolValue();
}

Number PropertyListValue::numberValue() const {
    if (!isNumber(type())) {
        raise("number value");
    }
    return numberOf(node());
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
    const Node& dictionary = nodeOfType(Type::Dictionary, "value for a key");
    std::string scratch;
    PropertyListValue found;
    std::uint32_t at = node_ + 1;
    for (std::uint32_t i = 0; i < dictionary.length; ++i) {
        std::uint32_t keyNode = at;
        std::uint32_t valueNode = at + 1;
        if (dictionary.form == Form::References) {
            keyNode = state_->reference(dictionary.offset, i);
            valueNode = state_->reference(dictionary.offset, dictionary.length + i);
        } else {
            at = state_->nodes[valueNode].extent;
        }
        // The search goes on behind a match: of a repeated key the last one counts.
        if (isText(*state_, state_->nodes[keyNode], key, scratch)) {
            found = PropertyListValue(state_, valueNode);
        }
    }
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
    std::uint32_t at = node_ + 1;
    for (std::uint32_t i = 0; i < dictionary.length; ++i) {
        if (dictionary.form == Form::References) {
            const std::uint32_t key = state_->reference(dictionary.offset, i);
            const std::uint32_t value = state_->reference(dictionary.offset, dictionary.length + i);
            result.emplace_back(PropertyListValue(state_, key), PropertyListValue(state_, value));
        } else {
            result.emplace_back(PropertyListValue(state_, at), PropertyListValue(state_, at + 1));
            at = state_->nodes[at + 1].extent;
        }
    }
    mergeRepeatedKeys(result);
    return result;
}

// Leaves each key at its first place, with the value of its last one. Each key is converted once:
// those that share an object are merged before.
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
