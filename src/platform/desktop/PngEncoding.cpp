#include "platform/desktop/PngEncoding.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <limits>
#include <mutex>

namespace quillet::platform {

namespace {

Result<std::string> pngOf(const QImage& image) {
    QBuffer buffer;
    QImageWriter writer(&buffer, "png");
    if (!writer.write(image)) {
        return Error{"Image", writer.error(), writer.errorString().toStdString()};
    }
    return buffer.data().toStdString();
}

// Whether there are as many pixels as the size says, and the toolkit supports the size.
bool isWhole(const Bitmap& bitmap) {
    constexpr std::size_t kLongest = std::numeric_limits<int>::max() / Bitmap::kBytesPerPixel;
    return bitmap.width > 0 && bitmap.height > 0 && bitmap.width <= kLongest &&
           bitmap.height <= kLongest &&
           bitmap.pixels.size() / Bitmap::kBytesPerPixel / bitmap.width == bitmap.height &&
           bitmap.pixels.size() == bitmap.width * bitmap.height * Bitmap::kBytesPerPixel;
}

// Cameras make pictures that are larger than the toolkit's default limit (128 MiB).
void allowLargePictures() {
    constexpr int kLimit = 1024;  // MiB
    static std::once_flag once;
    std::call_once(once, [] { QImageReader::setAllocationLimit(kLimit); });
}

}  // namespace

Result<std::string> pngOfImageData(std::string_view bytes) {
    // Not copied: the bytes outlive the reader.
    QByteArray data = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
    QBuffer buffer(&data);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    allowLargePictures();
    const QImage image = reader.read();
    if (image.isNull()) {
        return Error{"Image", reader.error(), reader.errorString().toStdString()};
    }
    return pngOf(image);
}

Result<std::string> pngOfBitmap(const Bitmap& bitmap) {
    if (!isWhole(bitmap)) {
        return Error{"Image",
                     QImageReader::InvalidDataError,
                     "an image object does not have the pixels of its size"};
    }
    return pngOf(QImage(bitmap.pixels.data(),
                        static_cast<int>(bitmap.width),
                        static_cast<int>(bitmap.height),
                        static_cast<qsizetype>(bitmap.width * Bitmap::kBytesPerPixel),
                        QImage::Format_RGBA8888));
}

}  // namespace quillet::platform
