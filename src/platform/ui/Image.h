#pragma once

#include <QImage>
#include <QSizeF>
#include <string_view>
#include <vector>

namespace quillet::platform {

// A picture of a size in points with one representation for each device pixel ratio that it was
// drawn for. A value; an empty image has no representation and the size 0 × 0.
class Image {
public:
    Image() = default;
    // The bundle's image resources `name`.png, `name`@2x.png and `name`@3x.png; empty where there
    // is none.
    static Image named(std::string_view name);
    // Representations of one size in points, each with its device pixel ratio; null ones are left
    // out.
    explicit Image(std::vector<QImage> representations);

    bool isNull() const { return representations_.empty(); }
    QSizeF size() const;  // points
    const std::vector<QImage>& representations() const { return representations_; }
    // The representation to draw at a device pixel ratio: the smallest that is at least as fine,
    // else the finest.
    QImage representationFor(double devicePixelRatio) const;

private:
    std::vector<QImage> representations_;
};

}  // namespace quillet::platform
