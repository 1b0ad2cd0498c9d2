#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quillet::platform {

// An image object: rows of pixels from the top, four bytes per pixel (red, green, blue and alpha,
// not premultiplied), sRGB.
struct Bitmap {
    static constexpr std::size_t kBytesPerPixel = 4;

    std::size_t width = 0;   // pixels
    std::size_t height = 0;  // pixels
    std::vector<std::uint8_t> pixels;
};

}  // namespace quillet::platform
