#pragma once

#include <QColor>

#include "platform/ui/Image.h"

namespace quillet::KXTint {

// A silhouette of the image in a colour: every pixel takes the colour and keeps its own alpha
// (source-atop). An invalid colour or an image without size gives an unchanged copy.
platform::Image kx_imageTintedWithColor(const platform::Image& image, const QColor& color);

// The image over a plate of its size in the colour given, white for an invalid colour.
platform::Image tn_add_background_color_to_image(const platform::Image& image, const QColor& color);

}  // namespace quillet::KXTint
