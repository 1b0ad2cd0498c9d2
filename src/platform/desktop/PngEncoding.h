#pragma once

#include <string>
#include <string_view>

#include "platform/base/Result.h"
#include "platform/extension/Bitmap.h"

// Pictures as PNG files. Any thread.
namespace quillet::platform {

// The bytes of a PNG file of the picture in an image file, turned upright as the file says, in any
// format that the toolkit reads (PNG, JPEG, GIF, BMP …). An error (domain "Image") where there is
// no picture in it, or one that takes more than 1 GiB of memory. Of a damaged file of some formats,
// JPEG for one, what can be read of it.
Result<std::string> pngOfImageData(std::string_view bytes);

// The bytes of a PNG file of an image object. An error (domain "Image") where it has no pixels, or
// not as many as its size asks for.
Result<std::string> pngOfBitmap(const Bitmap& bitmap);

}  // namespace quillet::platform
