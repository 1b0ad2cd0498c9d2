#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace quillet {

// The parameters of a query: unique keys, each with a text or a list of texts, enumerated in the
// order in which the keys first came. Finding a key takes constant time, also among keys that were
// chosen to collide.
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
    // Of a repeated key the last value counts.
    ParameterMap(std::initializer_list<Entry> entries);

    // The value of `key`, and whether the key is new; then its value is the empty text.
    std::pair<Value&, bool> tryEmplace(std::string key);
    // The value of `key`, or null. Null and values are good until the map changes.
    const Value* find(std::string_view key) const;

    const Entries& entries() const& noexcept { return entries_; }
    Entries entries() && { return std::move(entries_); }

    // The same entries in the same order.
    bool operator==(const ParameterMap& other) const { return entries_ == other.entries_; }

private:
    // One more than the place of an entry, or 0, and the hash of its key. Small, since what finding
    // a key among many costs is the way to the memory; more entries than this can tell would take
    // hundreds of gigabytes.
    struct Slot {
        std::uint32_t entry = 0;
        std::uint32_t hash = 0;
    };

    std::size_t placeOf(std::string_view key, std::uint32_t hash) const;
    void fillSlot(std::size_t entry, std::uint32_t hash);
    void addToIndex(std::uint32_t hash);

    Entries entries_;
    // A table of all keys with open addressing, or nothing where there are few entries. Its size is
    // a power of two.
    std::vector<Slot> index_;
};

}  // namespace quillet
