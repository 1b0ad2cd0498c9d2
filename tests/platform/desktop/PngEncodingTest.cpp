#include <QBuffer>
#include <QImage>
#include <gtest/gtest.h>
#include <thread>

#include "platform/desktop/PngEncoding.h"

namespace quillet::test {
namespace {

using platform::Bitmap;
using platform::Result;

constexpr QRgb kHalfRed = qRgba(255, 0, 0, 128);

std::string fileOf(const char* format) {
    QImage image(3, 2, QImage::Format_ARGB32);
    image.fill(Qt::blue);
    image.setPixel(2, 1, kHalfRed);
    QBuffer buffer;
    EXPECT_TRUE(image.save(&buffer, format));
    return buffer.data().toStdString();
}

QImage imageOf(const Result<std::string>& png) {
    return png ? QImage::fromData(QByteArray::fromStdString(png.value()), "png") : QImage();
}

TEST(PngEncoding, PictureOfAnyFormatKeepsItsPixelsOnAnyThread) {
    for (const char* format : {"png", "bmp", "xpm"}) {
        SCOPED_TRACE(format);
        QImage image;
        std::thread([&] { image = imageOf(platform::pngOfImageData(fileOf(format))); }).join();
        ASSERT_EQ(image.size(), QSize(3, 2));
        EXPECT_EQ(image.pixel(0, 0), qRgb(0, 0, 255));
        EXPECT_EQ(qRed(image.pixel(2, 1)), 255);
    }
}

TEST(PngEncoding, ImageObjectKeepsItsPixels) {
    const Bitmap bitmap{2, 1, {0, 0, 255, 255, 255, 0, 0, 128}};
    const QImage image = imageOf(platform::pngOfBitmap(bitmap));
    ASSERT_EQ(image.size(), QSize(2, 1));
    EXPECT_EQ(image.pixel(0, 0), qRgb(0, 0, 255));
    EXPECT_EQ(image.pixel(1, 0), kHalfRed);
}

TEST(PngEncoding, WhatHoldsNoWholePictureIsAnError) {
    const std::string png = fileOf("png");
    std::string huge = png;  // its header asks for 16 GiB
    huge.replace(16, 8, std::string("\0\1\0\0\0\1\0\0", 8));
    // A picture that claims 60,000 by 60,000 pixels in a format without checksums.
    const std::string hugeBitmap =
        fileOf("bmp").replace(18, 8, std::string("\x60\xEA\0\0\x60\xEA\0\0", 8));
    const std::pair<const char*, std::string> cases[] = {
        {"nothing", ""},
        {"text", "no picture"},
        {"cut", png.substr(0, png.size() / 2)},
        {"wrong size", huge},
        {"too large", hugeBitmap},
    };
    for (const auto& [name, bytes] : cases) {
        SCOPED_TRACE(name);
        const auto result = platform::pngOfImageData(bytes);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().domain, "Image");
        EXPECT_FALSE(result.error().text.empty());
    }
    constexpr std::size_t kHalf = std::size_t{1} << 63U;
    for (const Bitmap& bitmap :
         {Bitmap{}, Bitmap{1, 1, {0}}, Bitmap{kHalf, kHalf, {}}, Bitmap{4, kHalf, {0, 0, 0, 0}}}) {
        EXPECT_FALSE(platform::pngOfBitmap(bitmap));
    }
}

}  // namespace
}  // namespace quillet::test
