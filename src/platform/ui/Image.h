#pragma once

#include <QImage>
#include <QSizeF>
#include <string_view>
#include <vector>

namespace quillet::platform {

// A picture with one representation for each device pixel ratio that it was drawn for. A value; an
// empty image has no representation and the size 0 × 0.
class Image {
public:
    Image() = default;
    // Reads the bundle's image resources `name`.png, `name`@2x.png and `name`@3x.png. Empty if all
    // are missing.
    static Image named(std::string_view name);
    // Representations of the same size in points, each with its device pixel ratio. Null ones are
    // ignored.
    explicit Image(std::vector<QImage> representations);

    bool isNull() const { return representations_.empty(); }
    QSizeF size() const;  // points
    const std::vector<QImage>& representations() const { return representations_; }
    // The coarsest representation that is fine enough for a device pixel ratio, else the finest.
    QImage representationFor(double devicePixelRatio) const;

private:
    std::vector<QImage> representations_;
};

}  // namespace quillet::platform
