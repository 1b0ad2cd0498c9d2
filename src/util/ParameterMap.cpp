#include "util/ParameterMap.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace quillet {

namespace {

// Up to this many entries, looking at each is faster than an index.
constexpr std::size_t kFewEntries = 12;
constexpr std::size_t kFirstIndexSize = 64;

constexpr std::uint64_t kPrime = (std::uint64_t{1} << 61U) - 1;
__extension__ using Product = unsigned __int128;

// Congruent to left times right modulo kPrime, and less than 2^61 + 2.
std::uint64_t timesModuloPrime(std::uint64_t left, std::uint64_t right) {
    const Product product = Product{left} * right;
    const std::uint64_t folded =
        (static_cast<std::uint64_t>(product) & kPrime) + static_cast<std::uint64_t>(product >> 61U);
    return (folded & kPrime) + (folded >> 61U);
}

std::uint64_t randomMultiplier() {
    std::random_device device;
    return std::uniform_int_distribution<std::uint64_t>(1U << 16U, kPrime - 1)(device);
}

// The key as the coefficients of a polynomial, taken at a point that nobody outside of the process
// knows: whoever writes a query cannot choose keys that collide.
std::uint32_t hashOf(std::string_view key) {
    static const std::uint64_t kMultiplier = randomMultiplier();
    // Words of seven bytes are less than the prime. Eight are read where there are as many.
    constexpr std::size_t kWord = 7;
    constexpr std::uint64_t kWordMask = (std::uint64_t{1} << 56U) - 1;
    std::uint64_t hash = key.size();
    std::uint64_t word = 0;
    for (; key.size() > kWord; key.remove_prefix(kWord)) {
        std::memcpy(&word, key.data(), sizeof word);
        hash = timesModuloPrime(hash + (word & kWordMask), kMultiplier);
    }
    word = 0;
    for (const char character : key) {
        word = word << 8U | static_cast<unsigned char>(character);
    }
    hash = timesModuloPrime(hash + word, kMultiplier);
    return static_cast<std::uint32_t>(hash ^ (hash >> 32U));
}

}  // namespace

ParameterMap::ParameterMap(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries) {
        tryEmplace(entry.key).first = entry.value;
    }
}

std::pair<ParameterMap::Value&, bool> ParameterMap::tryEmplace(std::string key) {
    const std::uint32_t hash = index_.empty() ? 0 : hashOf(key);
    const std::size_t place = placeOf(key, hash);
    if (place < entries_.size()) {
        return {entries_[place].value, false};
    }
    Entry& entry = entries_.emplace_back();
    entry.key = std::move(key);
    addToIndex(hash);
    return {entry.value, true};
}

const ParameterMap::Value* ParameterMap::find(std::string_view key) const {
    const std::size_t place = placeOf(key, index_.empty() ? 0 : hashOf(key));
    return place < entries_.size() ? &entries_[place].value : nullptr;
}

// The place of the entry of `key`, or the number of entries where there is none.
std::size_t ParameterMap::placeOf(std::string_view key, std::uint32_t hash) const {
    if (index_.empty()) {
        const auto isKey = [&](const Entry& entry) { return entry.key == key; };
        const auto found = std::find_if(entries_.begin(), entries_.end(), isKey);
        return static_cast<std::size_t>(found - entries_.begin());
    }
    for (std::size_t at = hash;; ++at) {
        const Slot& slot = index_[at & (index_.size() - 1)];
        if (slot.entry == 0) {
            return entries_.size();
        }
        if (slot.hash == hash && entries_[slot.entry - 1].key == key) {
            return slot.entry - 1;
        }
    }
}

void ParameterMap::fillSlot(std::size_t entry, std::uint32_t hash) {
    std::size_t at = hash & (index_.size() - 1);
    while (index_[at].entry != 0) {
        at = (at + 1) & (index_.size() - 1);
    }
    index_[at] = {static_cast<std::uint32_t>(entry), hash};
}

// Adds the last entry; the table stays at most half full, so that searches end soon.
void ParameterMap::addToIndex(std::uint32_t hash) {
    if (index_.empty() && entries_.size() > kFewEntries) {
        index_.resize(kFirstIndexSize);
        for (std::size_t place = 0; place < entries_.size(); ++place) {
            fillSlot(place + 1, hashOf(entries_[place].key));
        }
    } else if (!index_.empty()) {
        if (2 * entries_.size() > index_.size()) {
            std::vector<Slot> old(4 * index_.size());
            old.swap(index_);
            for (const Slot& slot : old) {
                if (slot.entry != 0) {
                    fillSlot(slot.entry, slot.hash);
                }
            }
        }
        fillSlot(entries_.size(), hash);
    }
}

}  // namespace quillet
