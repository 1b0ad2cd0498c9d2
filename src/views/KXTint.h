#pragma once

#include <QColor>

#include "platform/ui/Image.h"

namespace quillet::KXTint {

// Returns a silhouette of the image in a colour: every pixel takes the colour and keeps its alpha
// (source-atop). Returns an unchanged copy for an invalid colour or an empty image.
platform::Image kx_imageTintedWithColor(const platform::Image& image, const QColor& color);

// Returns the image on a plate of its size in that colour, or in white for an invalid one.
platform::Image tn_add_background_color_to_image(const platform::Image& image, const QColor& color);

}  // namespace quillet::KXTint
