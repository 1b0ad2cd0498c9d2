#include <QBuffer>
#include <QImage>
#include <gtest/gtest.h>

#include "platform/desktop/PngEncoding.h"

namespace quillet::test {

using platform::Bitmap;

TEST(PngEncoding, WhatHoldsNoWholePictureIsAnError) {
    const auto fileOf = [](const char* format) {
        QBuffer buffer;
        QImage(3, 2, QImage::Format_RGB32).save(&buffer, format);
        return buffer.data().toStdString();
    };
    const std::string png = fileOf("png");
    ASSERT_TRUE(platform::pngOfImageData(png));
    // A picture that claims 60,000 by 60,000 pixels, in a format without checksums.
    const std::string huge =
        fileOf("bmp").replace(18, 8, std::string("\x60\xEA\0\0\x60\xEA\0\0", 8));
    for (const std::string& bytes :
         {std::string(), std::string("no picture"), png.substr(0, png.size() / 2), huge}) {
        const auto result = platform::pngOfImageData(bytes);
        ASSERT_FALSE(result);
        EXPECT_FALSE(result.error().text.empty());
    }
    constexpr std::size_t kHalf = std::size_t{1} << 63U;
    for (const Bitmap& bitmap :
         {Bitmap{}, Bitmap{1, 1, {0}}, Bitmap{kHalf, kHalf, {}}, Bitmap{4, kHalf, {0, 0, 0, 0}}}) {
        EXPECT_FALSE(platform::pngOfBitmap(bitmap));
    }
}

}  // namespace quillet::test
