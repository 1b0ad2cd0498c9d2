#pragma once

#include <string>
#include <string_view>

#include "platform/base/Result.h"
#include "platform/extension/Bitmap.h"

// Pictures as PNG files. Any thread.
namespace quillet::platform {

// The picture of an image file as the bytes of a PNG file, rotated as the image file says. Reads
// any format that the toolkit knows (PNG, JPEG, GIF, BMP …). An error (domain "Image") if the file
// holds no picture, or one that takes more than 1 GiB of memory. A damaged file of some formats,
// such as JPEG, gives the part that can be read.
Result<std::string> pngOfImageData(std::string_view bytes);

// An image object as the bytes of a PNG file. An error (domain "Image") if it has no pixels, or not
// as many as its size says.
Result<std::string> pngOfBitmap(const Bitmap& bitmap);

}  // namespace quillet::platform
