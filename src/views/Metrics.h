#pragma once

// Measures of the widget, in points. Distances between views are in the constraint strings.
namespace quillet::Metrics {

inline constexpr int kWidgetWidth = 320;
inline constexpr int kFirstWidgetHeight = 400;  // until the tree is laid out
inline constexpr int kRowHeight = 60;
inline constexpr int kFirstTableHeight = 50;  // until the first resize
inline constexpr double kTextSize = 13;

// The bar beside the two lines of the row that has the keyboard focus.
inline constexpr int kFocusBarIndent = 16;  // from the leading edge
inline constexpr int kFocusBarTop = 14;     // and from the bottom
inline constexpr int kFocusBarWidth = 3;

}  // namespace quillet::Metrics
