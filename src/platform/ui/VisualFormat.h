#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillet::platform {

enum class Axis { Horizontal, Vertical };
enum class Relation { Equal, AtLeast, AtMost };

// One demand on a length.
struct LengthBound {
    Relation relation = Relation::Equal;
    double points = 0;

    friend bool operator==(const LengthBound&, const LengthBound&) = default;
};

using LengthBounds = std::vector<LengthBound>;

// The contents of one visual-format string: a chain of views along an axis, from the leading to the
// trailing side or from top to bottom.
struct VisualFormat {
    struct View {
        std::string name;
        LengthBounds size;  // empty: open
    };

    Axis axis = Axis::Horizontal;
    std::vector<View> views;                  // at least one
    std::vector<LengthBounds> gaps;           // gaps[i] lies between views[i] and views[i + 1]
    std::optional<LengthBounds> leadingGap;   // to the container's edge, if tied to it
    std::optional<LengthBounds> trailingGap;  // likewise
};

// The notation, by example:
//   H:|-(35)-[from]-(>=10)-[date]   sizes and gaps in parentheses, with "==" (optional), ">=", "<="
//   V:|-[a(>=10,<=20)]-12-[b][c]-|  several demands; a gap without parentheses; "-" alone is 8
//                                   points between views and 20 to the container's edge; no "-"
//                                   is a gap of 0
// Without "H:" or "V:" the axis is horizontal. Lengths lie within ± 1,000,000 points.
//
// Raises platform::Exception with the string, the byte offset and what was expected there. Any
// thread.
VisualFormat parseVisualFormat(std::string_view text);

}  // namespace quillet::platform
