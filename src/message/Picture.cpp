#include "message/Picture.h"

#include <QBuffer>
#include <QByteArray>
#include <QImageReader>
#include <algorithm>
#include <array>

namespace quillet::message {

namespace {

constexpr qint64 kMostPixels = 16'000'000;

struct Kind {
    std::string_view start;
    const char* format;
};

// The toolkit's name of a kind of picture that can be shown; null: none.
const char* formatOf(std::string_view bytes) {
    constexpr std::array<Kind, 4> kKinds{
        {{"\x89PNG\r\n", "png"}, {"\xFF\xD8\xFF", "jpg"}, {"GIF8", "gif"}, {"BM", "bmp"}}};
    const auto* const kind = std::find_if(kKinds.begin(), kKinds.end(), [bytes](const Kind& each) {
        return bytes.starts_with(each.start);
    });
    return kind == kKinds.end() ? nullptr : kind->format;
}

}  // namespace

QImage pictureFrom(std::string_view bytes, int widest) {
    const char* const format = formatOf(bytes);
    if (format == nullptr) {
        return {};
    }
    QByteArray data = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
    QBuffer buffer(&data);
    QImageReader reader(&buffer, format);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (!size.isValid() || qint64{size.width()} * size.height() > kMostPixels) {
        return {};
    }
    const QImage image = reader.read();
    return image.width() <= widest ? image : image.scaledToWidth(widest, Qt::SmoothTransformation);
}

}  // namespace quillet::message
