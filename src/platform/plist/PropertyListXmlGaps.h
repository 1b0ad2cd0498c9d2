#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/plist/ByteScan.h"
#include "platform/plist/PropertyListState.h"
#include "platform/plist/PropertyListXmlCursor.h"

// Internal to the reader of XML property lists.
namespace quillet::platform {

// The bytes from the end of one dictionary entry to the value of the next, and their meaning.
// Dictionaries of the same kind follow each other with equal gaps, and comparing bytes is much
// faster than reading tags.
struct XmlGap {
    std::uint32_t offset = 0;
    std::uint32_t length = 0;
    PropertyListNode key;
    PropertyListType type =
        PropertyListType::Absent;  // of the value, if its tag is part of the gap
    XmlTag tag;
    bool seam = false;  // from the last entry of a dictionary to the first of the next in an array
};

// The gaps of the last dictionaries, by the index of the entry in its dictionary.
class XmlGaps {
public:
    static constexpr std::size_t kMostGaps = 64;  // entries of a dictionary

    XmlGaps(const char* text, std::size_t size) : base_(text), end_(text + size) {}

    // The gap of the entry `index` if the same bytes are at `at`, else null. A seam contains the
    // first gap it was made from, and is outdated once that gap has been replaced.
    const XmlGap* repeatedAt(const char* at, std::size_t index) const noexcept {
        if (index >= gaps_.size()) {
            return nullptr;
        }
        const XmlGap& gap = gaps_[index];
        const bool same = gap.length > 0 && standsAt(gap, at);
        const bool stale = gap.seam && gap.key.offset != gaps_[0].key.offset;
        return same && !stale ? &gap : nullptr;
    }

    // Remembers the gap from `start` to the value after the key, for the entry `index`.
    void remember(const char* start,
                  const char* value,
                  std::size_t index,
                  const PropertyListNode& key) noexcept;

    // Called at `at`, after a dictionary of an array. If the next dictionary begins with the same
    // gap as this one, remembers everything from `start`, the end of the last entry, as one gap.
    void rememberSeam(const char* start, const char* at, std::size_t entries) noexcept;

    // A number of the current gaps; 0 when there have been too many changes.
    std::uint16_t shape() const noexcept {
        constexpr std::uint32_t kLargest = 0xFFFF;
        return shape_ <= kLargest ? static_cast<std::uint16_t>(shape_) : std::uint16_t{0};
    }

private:
    static constexpr std::ptrdiff_t kLongest = 256;  // bytes

    bool standsAt(const XmlGap& gap, const char* at) const noexcept {
        return end_ - at >= static_cast<std::ptrdiff_t>(gap.length) &&
               sameBytes(at, base_ + gap.offset, gap.length);
    }
    std::uint32_t offsetOf(const char* place) const noexcept {
        return static_cast<std::uint32_t>(place - base_);
    }
    std::string_view restAt(const char* at) const noexcept {
        return {at, static_cast<std::size_t>(end_ - at)};
    }

    const char* base_;
    const char* end_;
    std::array<XmlGap, kMostGaps> gaps_{};
    std::uint32_t shape_ = 0;  // counts the changes of gaps_
};

}  // namespace quillet::platform
