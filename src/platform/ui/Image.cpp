#include "platform/ui/Image.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "platform/extension/Bundle.h"

namespace quillet::platform {

Image Image::named(std::string_view name) {
    struct Variant {
        const char* suffix;
        double devicePixelRatio;
    };
    static constexpr std::array<Variant, 3> kVariants{
        {{".png", 1}, {"@2x.png", 2}, {"@3x.png", 3}}};
    std::vector<QImage> representations;
    for (const Variant& variant : kVariants) {
        const std::string file = "images/" + std::string(name) + variant.suffix;
        const std::optional<std::string> path = Bundle::main().pathForResource(file);
        QImage image = path ? QImage(QString::fromStdString(*path), "PNG") : QImage();
        image.setDevicePixelRatio(variant.devicePixelRatio);
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
