#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <unordered_set>
#include <utility>
#include <vector>

// Operations on lists that keep the order. All are pure: they read the receiver (the first
// argument) and return something new, so any thread may call them.
//
// Elements are compared by their own equality: isEqual for records held by pointer, == for
// everything else. A key is a function from an element to std::optional; an empty result means that
// the element has no value for the key. Key values need == and std::hash.
namespace quillet::Tarno {

template <typename Element>
bool isEqual(const Element& left, const Element& right) {
    if constexpr (requires { left->isEqual(&*right); }) {
        return left == right || (left && left->isEqual(right.get()));
    } else {
        return left == right;
    }
}

template <typename Element>
bool containsObject(const std::vector<Element>& list, const Element& element) {
    return std::any_of(list.begin(), list.end(), [&](const Element& candidate) {
        return isEqual(element, candidate);
    });
}

template <typename Element>
std::uint64_t countNumber(const std::vector<Element>& list) {
    return list.size();
}

// The elements of `list` that `other` contains, repeats kept.
template <typename Element>
std::vector<Element> Intersect(const std::vector<Element>& list,
                               const std::vector<Element>& other) {
    std::vector<Element> result;
    std::copy_if(list.begin(), list.end(), std::back_inserter(result), [&](const Element& element) {
        return containsObject(other, element);
    });
    return result;
}

// Each element once, at its first position. Quadratic, meant for short lists.
template <typename Element>
std::vector<Element> Unique(const std::vector<Element>& list) {
    std::vector<Element> result;
    for (const Element& element : list) {
        if (!containsObject(result, element)) {
            result.push_back(element);
        }
    }
    return result;
}

// The first element of each key value, in the order of first appearance; elements without a value
// are dropped. Linear.
template <typename Element, typename Key>
std::vector<Element> Unique(const std::vector<Element>& list, Key key) {
    using Value = typename std::decay_t<std::invoke_result_t<Key, const Element&>>::value_type;
    std::unordered_set<Value> seen;
    std::vector<Element> result;
    for (const Element& element : list) {
        auto value = std::invoke(key, element);
        if (value && seen.insert(*std::move(value)).second) {
            result.push_back(element);
        }
    }
    return result;
}

// Each element once, by std::hash and ==; linear. For a list of one element returns the list
// itself, not a copy. `list` must not be null.
template <typename Element>
std::shared_ptr<const std::vector<Element>> UniqueDict(
    const std::shared_ptr<const std::vector<Element>>& list) {
    if (list->size() == 1) {
        return list;
    }
    std::unordered_set<Element> seen;
    auto result = std::make_shared<std::vector<Element>>();
    for (const Element& element : *list) {
        if (seen.insert(element).second) {
            result->push_back(element);
        }
    }
    return result;
}

template <typename Element>
std::vector<Element> reversedArrayx(const std::vector<Element>& list) {
    return {list.rbegin(), list.rend()};
}

// Groups runs of neighbours with the same value for the key. An absent value equals nothing, not
// even another absent one, so each element without a value starts a group. If the first element has
// no value, the result begins with an empty group, because it is compared with itself. Both are
// kept on purpose.
template <typename Element, typename Key>
std::vector<std::vector<Element>> groupByKeyPath(const std::vector<Element>& list, Key key) {
    std::vector<std::vector<Element>> groups;
    if (list.empty()) {
        return groups;
    }
    std::vector<Element> current;
    auto currentValue = std::invoke(key, list.front());
    for (const Element& element : list) {
        auto value = std::invoke(key, element);
        if (value && value == currentValue) {
            current.push_back(element);
        } else {
            groups.push_back(std::exchange(current, {element}));
            currentValue = std::move(value);
        }
    }
    groups.push_back(std::move(current));
    return groups;
}

// Chunks of `size` elements; the last one may be shorter. Throws std::invalid_argument for 0.
template <typename Element>
std::vector<std::vector<Element>> SplitWithRange(const std::vector<Element>& list,
                                                 std::size_t size) {
    if (size == 0) {
        throw std::invalid_argument("SplitWithRange: a chunk holds at least one element");
    }
    std::vector<std::vector<Element>> chunks;
    for (std::size_t position = 0; position < list.size();) {
        const std::size_t length = std::min(list.size() - position, size);
        const auto first = list.begin() + static_cast<std::ptrdiff_t>(position);
        chunks.emplace_back(first, first + static_cast<std::ptrdiff_t>(length));
        position += length;
    }
    return chunks;
}

// Whether `list` contains `pattern` without a gap. One pass that never goes back into a partial
// match: (1, 1, 1, 2) does not contain (1, 1, 2). Kept on purpose.
template <typename Element>
bool contains_contiguous_sub_array(const std::vector<Element>& list,
                                   const std::vector<Element>& pattern) {
    if (pattern.empty()) {
        return false;
    }
    std::size_t matched = 0;
    for (const Element& element : list) {
        if (matched == pattern.size()) {
            break;
        }
        if (isEqual(element, pattern[matched])) {
            ++matched;
        } else {
            matched = isEqual(element, pattern.front()) ? 1 : 0;
        }
    }
    return matched == pattern.size();
}

}  // namespace quillet::Tarno
