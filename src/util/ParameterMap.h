#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace quillet {

// The parameters of a query: unique keys, each with a text or a list of texts, enumerated in the
// order in which the keys first came. Finding a key takes logarithmic time, whatever the keys are.
class ParameterMap {
public:
    using List = std::vector<std::string>;
    using Value = std::variant<std::string, List>;
    struct Entry {
        std::string key;
        Value value;

        bool operator==(const Entry&) const = default;
    };
    using Entries = std::deque<Entry>;

    ParameterMap() = default;
    // The last value of a repeated key counts.
    ParameterMap(std::initializer_list<Entry> entries);

    // The value of `key`, and whether the key is new; the value of a new key is the empty text.
    std::pair<Value&, bool> tryEmplace(std::string key);
    // The value of `key`, or null. Pointers to values and references are good until the map
    // changes.
    const Value* find(std::string_view key) const;

    const Entries& entries() const& noexcept { return entries_; }
    Entries entries() && { return std::move(entries_); }

    // Whether the entries and their order are the same.
    bool operator==(const ParameterMap& other) const { return entries_ == other.entries_; }

private:
    Entries entries_;
    std::map<std::string, std::size_t, std::less<>> places_;  // of each key in entries_
};

}  // namespace quillet
