#include "util/ParameterMap.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>

namespace quillet {

namespace {

// Up to this many entries, looking at each is faster than an index.
constexpr std::size_t kFewEntries = 12;

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
    return std::uniform_int_distribution<std::uint64_t>(1 << 16U, kPrime - 1)(device);
}

}  // namespace

// The key as the coefficients of a polynomial, taken at a place that nobody outside of the process
// knows: whoever writes a query cannot choose keys that collide.
std::size_t ParameterMap::KeyHash::operator()(std::string_view key) const {
    static const std::uint64_t kMultiplier = randomMultiplier();
    constexpr std::size_t kWord = 7;
    std::uint64_t hash = key.size();
    while (!key.empty()) {
        std::uint64_t word = 0;
        const std::size_t length = std::min(kWord, key.size());
        std::memcpy(&word, key.data(), length);
        hash = timesModuloPrime(hash + word, kMultiplier);
        key.remove_prefix(length);
    }
    return hash;
}

ParameterMap::ParameterMap(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries) {
        set(entry.key, entry.value);
    }
}

std::pair<ParameterMap::Value*, bool> ParameterMap::tryEmplace(std::string&& key) {
    if (const std::optional<std::size_t> place = placeOf(key)) {
        return {&entries_[*place].value, false};
    }
    entries_.emplace_back(Entry{std::move(key), {}});
    if (entries_.size() > kFewEntries) {
        for (std::size_t place = index_.size(); place < entries_.size(); ++place) {
            index_.emplace(entries_[place].key, place);
        }
    }
    return {&entries_.back().value, true};
}

void ParameterMap::set(std::string key, Value value) {
    *tryEmplace(std::move(key)).first = std::move(value);
}

const ParameterMap::Value* ParameterMap::find(std::string_view key) const {
    const std::optional<std::size_t> place = placeOf(key);
    return place ? &entries_[*place].value : nullptr;
}

ParameterMap::Entries ParameterMap::takeEntries() && {
    index_.clear();
    return std::move(entries_);
}

std::optional<std::size_t> ParameterMap::placeOf(std::string_view key) const {
    if (!index_.empty()) {
        const auto found = index_.find(key);
        return found != index_.end() ? std::optional(found->second) : std::nullopt;
    }
    for (std::size_t place = 0; place < entries_.size(); ++place) {
        if (entries_[place].key == key) {
            return place;
        }
    }
    return std::nullopt;
}

}  // namespace quillet
