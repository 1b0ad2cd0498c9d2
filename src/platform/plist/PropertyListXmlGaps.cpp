#include "platform/plist/PropertyListXmlGaps.h"

namespace quillet::platform {

void XmlGaps::remember(const char* start,
                       const char* value,
                       std::size_t index,
                       const PropertyListNode& key) noexcept {
    ++shape_;
    if (index >= gaps_.size()) {
        return;
    }
    XmlGap& gap = gaps_[index];
    gap = {};
    if (value - start > kLongest) {
        return;
    }
    gap.offset = offsetOf(start);
    gap.length = offsetOf(value) - gap.offset;
    gap.key = key;
    if (restAt(value).starts_with("<string>")) {
        gap.type = PropertyListType::String;
        gap.tag.name = {value + 1, 6};
    } else if (restAt(value).starts_with("<integer>")) {
        gap.type = PropertyListType::Integer;
        gap.tag.name = {value + 1, 7};
    }
    if (gap.type != PropertyListType::Absent) {
        gap.length += static_cast<std::uint32_t>(gap.tag.name.size() + 2);
    }
}

void XmlGaps::rememberSeam(const char* start, const char* at, std::size_t entries) noexcept {
    constexpr std::string_view kOpeningTag = "<dict>";
    const XmlGap& first = gaps_[0];
    if (entries == 0 || entries >= gaps_.size() || first.length == 0 ||
        !restAt(at).starts_with(kOpeningTag) || !standsAt(first, at + kOpeningTag.size())) {
        return;
    }
    const std::ptrdiff_t length = at + kOpeningTag.size() + first.length - start;
    if (length <= kLongest) {
        ++shape_;
        XmlGap& seam = gaps_[entries];
        seam = first;
        seam.offset = offsetOf(start);
        seam.length = static_cast<std::uint32_t>(length);
        seam.seam = true;
    }
}

}  // namespace quillet::platform
