#pragma once

#include <cstddef>
#include <deque>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

namespace quillet {

// The parameters of a query: unique keys, each with a text or a list of texts, enumerated in the
// order in which the keys first came. Moved, never copied. Finding a key takes constant time, also
// among keys that were chosen to collide.
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
    ParameterMap(std::initializer_list<Entry> entries);
    ParameterMap(ParameterMap&&) = default;
    ParameterMap& operator=(ParameterMap&&) = default;

    // The value of `key`, and whether the key is new; then its value is the empty text. The value
    // stays in its place as long as the map.
    std::pair<Value*, bool> tryEmplace(std::string&& key);
    // Sets the value of `key`, which keeps its place in the order where it has one.
    void set(std::string key, Value value);
    const Value* find(std::string_view key) const;

    const Entries& entries() const noexcept { return entries_; }
    Entries takeEntries() &&;

    // The same entries in the same order.
    bool operator==(const ParameterMap& other) const { return entries_ == other.entries_; }

private:
    struct KeyHash {
        std::size_t operator()(std::string_view key) const;
    };

    std::optional<std::size_t> placeOf(std::string_view key) const;

    // A deque leaves entries where they are when others are added, so the index can refer to keys.
    Entries entries_;
    // The places of all keys, or none where there are few entries.
    std::unordered_map<std::string_view, std::size_t, KeyHash> index_;
};

}  // namespace quillet
