#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/desktop/Appearance.h"

namespace quillet {

struct Snapshot {
    std::string file;  // path of a PNG; a FIFO or a device is written into
    std::optional<std::int64_t> segment;
    platform::Look look = platform::Look::Light;
};

// Draws the widget after one full read, at rest, on the panel's background: 320 points wide, as
// high as its rows. An error text, or none on success. Needs a QApplication, whose device pixel
// ratio is the picture's scale, but no event loop.
std::optional<std::string> drawSnapshot(const Snapshot& snapshot);

}  // namespace quillet
