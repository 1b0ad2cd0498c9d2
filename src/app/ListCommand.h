#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quillet {

enum class ListFormat { Text, Json };

// The rows that the widget shows after one full read, as text that ends in a line break: two lines
// a row, or one JSON object. `segment` replaces the stored one. Needs no display, bus or event
// loop.
std::string listRows(ListFormat format, std::optional<std::int64_t> segment);

}  // namespace quillet
