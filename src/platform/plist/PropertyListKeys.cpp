#include <algorithm>
#include <cstring>

#include "platform/plist/PropertyList.h"
#include "platform/plist/PropertyListState.h"

namespace quillet::platform {

namespace {

using Form = PropertyListForm;
using Node = PropertyListNode;
using State = PropertyListState;

}  // namespace

PropertyListKeys::PropertyListKeys(std::span<const std::string_view> keys)
    : keys_(keys.begin(), keys.end()), positions_(keys_.size(), kNone) {
    for (const std::string_view key : keys_) {
        longestKey_ = std::max(longestKey_, key.size());
    }
}

bool PropertyListKeys::Shape::holds(const State& state, const Node& dictionary) const {
    if (generation != state.generation || length != dictionary.length) {
        return false;
    }
    if (dictionary.form != Form::References) {
        return shape != 0 && shape == dictionary.heightOrShape;
    }
    const std::size_t size = std::size_t{length} * state.referenceWidth;
    return std::memcmp(state.text + keys, state.text + dictionary.offset, size) == 0;
}

// The index of the wanted key at a position, or kNone for any other key.
std::uint32_t PropertyListKeys::keyAt(std::uint32_t position, std::string_view key) {
    if (position >= expected_.size()) {
        expected_.resize(position + 1, kNone);
    }
    std::uint32_t& expected = expected_[position];
    if (expected == kNone || keys_[expected] != key) {
        const auto found = std::find(keys_.begin(), keys_.end(), key);
        expected = found == keys_.end() ? kNone : static_cast<std::uint32_t>(found - keys_.begin());
    }
    return expected;
}

// Finds the values by the texts of their keys and remembers the positions.
void PropertyListKeys::search(const PropertyListValue& dictionary,
                              std::span<PropertyListValue> found) {
    const State& state = *dictionary.state_;
    const Node& node = dictionary.node();
    std::fill(positions_.begin(), positions_.end(), kNone);
    std::uint32_t position = 0;
    forEachEntry(state, dictionary.node_, [&](std::uint32_t key, std::uint32_t value) {
        const Node& text = state.nodes[key];
        // A UTF-16 key that is longer than every wanted key is not converted.
        const bool isWanted = text.form != Form::Utf16 || text.length <= 2 * longestKey_;
        const std::uint32_t index =
            isWanted ? keyAt(position, textOfNode(state, text, scratch_)) : kNone;
        // The last value of a repeated key counts.
        if (index != kNone) {
            positions_[index] = position;
            found[index] = {&state, value};
        }
        ++position;
    });
    last_ = {state.generation, node.length, node.heightOrShape, node.offset};
}

// The values of a dictionary whose keys have the same positions as in the last one.
void PropertyListKeys::repeat(const PropertyListValue& dictionary,
                              std::span<PropertyListValue> found) const {
    const State& state = *dictionary.state_;
    const Node& node = dictionary.node();
    const bool binary = node.form == Form::References;
    for (std::size_t i = 0; i < positions_.size(); ++i) {
        const std::uint32_t position = positions_[i];
        if (position == kNone) {
            found[i] = {};
        } else {
            found[i] = {&state,
                        binary ? state.reference(node.offset, node.length + position)
                               : dictionary.node_ + 2 * position + 2};
        }
    }
}

void PropertyListKeys::find(const PropertyListValue& dictionary,
                            std::span<PropertyListValue> found) {
    const bool repeated = dictionary.type() == PropertyListType::Dictionary &&
                          last_.holds(*dictionary.state_, dictionary.node());
    if (repeated) {
        repeat(dictionary, found);
        return;
    }
    std::fill(found.begin(), found.end(), PropertyListValue());
    dictionary.nodeOfType(PropertyListType::Dictionary, "values for keys");
    search(dictionary, found);
}

}  // namespace quillet::platform
