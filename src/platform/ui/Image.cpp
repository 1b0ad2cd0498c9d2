#include "platform/ui/Image.h"

#include <algorithm>
#include <optional>
#include <png.h>
#include <string>

#include "platform/extension/Bundle.h"

namespace quillet::platform {

namespace {

// Null when the file is not a PNG picture. The toolkit's own reader would load its plugins for all
// other formats first, which costs the panel 0.4 MiB.
QImage readPng(const std::string& path) {
    png_image file{};
    file.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&file, path.c_str()) == 0) {
        return {};
    }
    file.format = PNG_FORMAT_RGBA;
    QImage image(
        static_cast<int>(file.width), static_cast<int>(file.height), QImage::Format_RGBA8888);
    const auto rowBytes = static_cast<png_int_32>(image.bytesPerLine());
    if (image.isNull() ||
        png_image_finish_read(&file, nullptr, image.bits(), rowBytes, nullptr) == 0) {
        png_image_free(&file);
        return {};
    }
    return image;
}

}  // namespace

Image Image::named(std::string_view name) {
    std::vector<QImage> representations;
    for (const int ratio : {1, 2, 3}) {
        const std::string suffix = ratio == 1 ? "" : "@" + std::to_string(ratio) + "x";
        const std::string file = "images/" + std::string(name) + suffix + ".png";
        const std::optional<std::string> path = Bundle::main().pathForResource(file);
        QImage image = path ? readPng(*path) : QImage();
        image.setDevicePixelRatio(ratio);
        representations.push_back(std::move(image));
    }
    return Image(std::move(representations));
}

Image::Image(std::vector<QImage> representations) : representations_(std::move(representations)) {
    std::erase_if(representations_, [](const QImage& image) { return image.isNull(); });
    std::stable_sort(
        representations_.begin(), representations_.end(), [](const QImage& a, const QImage& b) {
            return a.devicePixelRatio() < b.devicePixelRatio();
        });
}

QSizeF Image::size() const {
    return isNull() ? QSizeF(0, 0) : representations_.front().deviceIndependentSize();
}

QImage Image::representationFor(double devicePixelRatio) const {
    if (isNull()) {
        return {};
    }
    const auto fine = std::find_if(
        representations_.begin(), representations_.end(), [devicePixelRatio](const QImage& image) {
            return image.devicePixelRatio() >= devicePixelRatio;
        });
    return fine == representations_.end() ? representations_.back() : *fine;
}

}  // namespace quillet::platform
