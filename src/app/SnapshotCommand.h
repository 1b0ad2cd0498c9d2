#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/desktop/Appearance.h"

namespace quillet {

struct Snapshot {
    std::string file;  // path of the PNG; an existing FIFO or device is written to
    std::optional<std::int64_t> segment;
    platform::Look look = platform::Look::Light;
};

// Draws the widget after one full read, without animations, on the panel's background: 320 points
// wide and as high as its rows. Returns an error text, or none on success. Needs a QApplication,
// whose device pixel ratio is the picture's scale, but no event loop.
std::optional<std::string> drawSnapshot(const Snapshot& snapshot);

}  // namespace quillet
