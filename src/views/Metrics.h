#pragma once

// Measures of the widget, in points. Those that place one view beside another stand in the
// constraint strings.
namespace quillet::Metrics {

inline constexpr int kWidgetWidth = 320;
inline constexpr int kFirstWidgetHeight = 400;  // until the tree is laid out
inline constexpr int kRowHeight = 60;
inline constexpr int kFirstTableHeight = 50;  // until the first resize
inline constexpr double kTextSize = 13;

}  // namespace quillet::Metrics
